#pragma once

#include <tl/expected.hpp>

#include <QCoroTask>
#include <QString>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

#include "platform/http/HttpClient.h"
#include "updates/Appcast.h"
#include "updates/UpdateError.h"

namespace tidemark {

class Workspace;
class UpdateArchive;

/// How the running program is installed.
struct InstalledForm {
    /// The file of the AppImage that runs; empty when it runs from a package.
    QString appImagePath;
    /// A folder of our own, where a package is kept for the system's installer. Made when needed.
    QString cacheFolder;

    [[nodiscard]] bool isAppImage() const { return !appImagePath.isEmpty(); }
    [[nodiscard]] ArchiveKind archiveKind() const {
        return isAppImage() ? ArchiveKind::appImage : ArchiveKind::package;
    }
};

/// What went wrong, with what more there is to say of it.
struct UpdateFailure {
    UpdateError error = UpdateError::feedUnreachable;
    std::optional<TransportError> cause{};
    /// The one that could not be written to.
    QString folder{};

    /// English sentences for the user, without an address.
    [[nodiscard]] QString description() const;
    bool operator==(const UpdateFailure&) const = default;
};

/// Downloads the archive of a release, checks it, and puts it where it belongs.
///
/// The archive is a private file that nobody would run until its length and its signature are right, and what
/// was checked is the very file that is put in place. An AppImage is replaced in one step: at any failure,
/// the full disk and the lost power included, the old file is there and whole.
class UpdateInstaller {
public:
    enum class Outcome : quint8 { installed, handedOver, cancelled };
    enum class Step : quint8 { downloading, verifying };

    using Result = tl::expected<Outcome, UpdateFailure>;
    /// Told at the beginning of each step, and of the bytes received.
    using Progress = std::function<void(Step step, qint64 received)>;

    /// `publicKey` as in the bundle.
    UpdateInstaller(HttpClient& http, Workspace& workspace, InstalledForm form, QByteArray publicKey);

    /// The archive of the release that fits how the program is installed; nothing when there is none.
    [[nodiscard]] std::optional<AppcastEnclosure> fittingArchive(const AppcastItem& release) const;

    /// Why the archive would be refused, as far as that can be told without it.
    [[nodiscard]] std::optional<UpdateError> refusal(const AppcastEnclosure& archive) const;

    /// `cancelled` when `stop` was triggered in time; nothing is left then. The installer must outlive the
    /// task.
    [[nodiscard]] QCoro::Task<Result> install(AppcastItem release, Progress progress, std::stop_token stop);

private:
    using Archive = std::unique_ptr<UpdateArchive>;

    /// Where the archive of this release belongs.
    [[nodiscard]] tl::expected<QString, UpdateFailure> target(const AppcastItem& release) const;
    [[nodiscard]] tl::expected<Archive, UpdateFailure> makeRoom(const QString& folder, qint64 length) const;
    /// The archive is the waiting caller's.
    [[nodiscard]] QCoro::Task<std::optional<UpdateFailure>> download(AppcastEnclosure enclosure,
                                                                     UpdateArchive* archive,
                                                                     Progress progress, std::stop_token stop);
    [[nodiscard]] UpdateFailure storingFailure(int systemError, const QString& folder) const;

    HttpClient& m_http;
    Workspace& m_workspace;
    InstalledForm m_form;
    QByteArray m_publicKey;
};

}  // namespace tidemark
