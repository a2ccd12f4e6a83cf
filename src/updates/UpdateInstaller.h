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

/// How the running program was installed.
struct InstalledForm {
    /// The running AppImage; empty when the program comes from a package.
    QString appImagePath;
    /// Our folder for packages that are passed to the system's installer. Created when needed.
    QString cacheFolder;

    [[nodiscard]] bool isAppImage() const { return !appImagePath.isEmpty(); }
    [[nodiscard]] ArchiveKind archiveKind() const {
        return isAppImage() ? ArchiveKind::appImage : ArchiveKind::package;
    }
};

/// An error with its details.
struct UpdateFailure {
    UpdateError error = UpdateError::feedUnreachable;
    std::optional<TransportError> cause{};
    /// The folder that could not be written to.
    QString folder{};

    /// English sentences for the user. They contain no address.
    [[nodiscard]] QString description() const;
    bool operator==(const UpdateFailure&) const = default;
};

/// Downloads the archive of a release, verifies and installs it.
///
/// Until its length and signature have been verified, the archive is a private file that cannot be run, and
/// the verified file itself is the one that is installed. An AppImage is replaced atomically, so after any
/// failure, including a full disk or a power failure, the old file is intact.
class UpdateInstaller {
public:
    enum class Outcome : quint8 { installed, handedOver, cancelled };
    enum class Step : quint8 { downloading, verifying };

    using Result = tl::expected<Outcome, UpdateFailure>;
    /// Called at the beginning of each step and when bytes have been received.
    using Progress = std::function<void(Step step, qint64 received)>;

    /// `publicKey` is the one of the bundle, in base64.
    UpdateInstaller(HttpClient& http, Workspace& workspace, InstalledForm form, QByteArray publicKey);

    /// The archive of the release in the form in which the program is installed; nothing when there is none.
    [[nodiscard]] std::optional<AppcastEnclosure> fittingArchive(const AppcastItem& release) const;

    /// Why the archive would be refused, judged by the feed alone.
    [[nodiscard]] std::optional<UpdateError> refusal(const AppcastEnclosure& archive) const;

    /// Gives `cancelled`, and leaves no files, when `stop` is triggered before the archive is installed. The
    /// installer must outlive the task.
    [[nodiscard]] QCoro::Task<Result> install(AppcastItem release, Progress progress, std::stop_token stop);

private:
    using Archive = std::unique_ptr<UpdateArchive>;

    /// The path at which the archive of this release is installed.
    [[nodiscard]] tl::expected<QString, UpdateFailure> target(const AppcastItem& release) const;
    [[nodiscard]] tl::expected<Archive, UpdateFailure> makeRoom(const QString& folder, qint64 length) const;
    /// `archive` must outlive the task.
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
