#include "updates/UpdateInstaller.h"

#include <unistd.h>

#include <QCoroFuture>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtConcurrentRun>
#include <algorithm>
#include <cerrno>

#include "platform/session/Workspace.h"
#include "updates/Ed25519.h"
#include "updates/UpdateArchive.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 largestArchive = qint64{256} * 1024 * 1024;

/// A name for the user to recognise the package by, in which no characters of the feed's version can do harm.
QString packageName(const AppcastItem& release) {
    QString version;
    for (const QChar c : release.version.left(40)) {
        const bool isPlain = c.unicode() < 0x80 && (c.isLetterOrNumber() || c == u'.' || c == u'-');
        version += isPlain ? c : u'_';
    }
    return u"tidemark-"_s + version + u".deb"_s;
}

/// Removes packages that were handed over for earlier updates.
void removePackages(const QString& folder) {
    const QDir packages(folder, u"tidemark-*.deb"_s, QDir::NoSort, QDir::Files);
    for (const QString& name : packages.entryList())
        QFile::remove(packages.filePath(name));
}

mode_t permissionsOf(const QString& path) {
    struct stat state{};
    return ::stat(QFile::encodeName(path).constData(), &state) == 0 ? state.st_mode & 0777 : 0755;
}

}  // namespace

QString UpdateFailure::description() const {
    if (!folder.isEmpty() && error == UpdateError::notReplaceable)
        return u"Tidemark cannot replace its own file in %1. Download the new version by hand."_s.arg(folder);
    if (!folder.isEmpty() && error == UpdateError::diskFull)
        return u"There is not enough room for the update in %1."_s.arg(folder);
    const QString text = tidemark::description(error);
    return cause ? text + u' ' + tidemark::description(*cause) : text;
}

UpdateInstaller::UpdateInstaller(HttpClient& http, Workspace& workspace, InstalledForm form,
                                 QByteArray publicKey)
    : m_http(http), m_workspace(workspace), m_form(std::move(form)), m_publicKey(std::move(publicKey)) {}

std::optional<AppcastEnclosure> UpdateInstaller::fittingArchive(const AppcastItem& release) const {
    const auto found = std::ranges::find(release.enclosures, m_form.archiveKind(), &AppcastEnclosure::kind);
    return found == release.enclosures.end() ? std::nullopt : std::optional(*found);
}

std::optional<UpdateError> UpdateInstaller::refusal(const AppcastEnclosure& archive) const {
    // Whether plain http is allowed to this machine itself is up to the HTTP client.
    if (archive.url.scheme() != "https"_L1 && !isLoopback(archive.url.host()))
        return UpdateError::archiveInsecure;
    if (archive.length <= 0)
        return UpdateError::feedMalformed;
    if (archive.length > largestArchive)
        return UpdateError::archiveTooLarge;
    if (!ed25519Key(m_publicKey))
        return UpdateError::keyUnusable;
    // An invalid signature counts as none.
    if (!ed25519Signature(archive.signature))
        return UpdateError::archiveUnsigned;
    return std::nullopt;
}

tl::expected<QString, UpdateFailure> UpdateInstaller::target(const AppcastItem& release) const {
    if (!m_form.isAppImage()) {
        QDir().mkpath(m_form.cacheFolder);
        // Nobody else may replace the package before the system's installer, which has more rights, reads it.
        QFile::setPermissions(m_form.cacheFolder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return m_form.cacheFolder + u'/' + packageName(release);
    }
    // If it was started by a link, the link stays and its target is replaced.
    const QFileInfo file(QFileInfo(m_form.appImagePath).canonicalFilePath());
    if (!file.isFile()) {
        const QString folder = QFileInfo(m_form.appImagePath).absolutePath();
        return tl::unexpected(UpdateFailure{.error = UpdateError::notReplaceable, .folder = folder});
    }
    return file.filePath();
}

UpdateFailure UpdateInstaller::storingFailure(int systemError, const QString& folder) const {
    const bool isFull = systemError == ENOSPC || systemError == EDQUOT || systemError == EFBIG;
    const UpdateError place = m_form.isAppImage() ? UpdateError::notReplaceable : UpdateError::notStorable;
    return {.error = isFull ? UpdateError::diskFull : place, .folder = folder};
}

tl::expected<UpdateInstaller::Archive, UpdateFailure> UpdateInstaller::makeRoom(const QString& folder,
                                                                                qint64 length) const {
    UpdateArchive::removeLeftovers(folder);
    if (!m_form.isAppImage())
        removePackages(folder);
    auto created = UpdateArchive::create(folder, length);
    if (!created)
        return tl::unexpected(storingFailure(created.error(), folder));
    return *std::move(created);
}

QCoro::Task<UpdateInstaller::Result> UpdateInstaller::install(AppcastItem release, Progress progress,
                                                              std::stop_token stop) {
    const std::optional<AppcastEnclosure> enclosure = fittingArchive(release);
    if (!enclosure)
        co_return tl::unexpected(UpdateFailure{.error = UpdateError::noFittingArchive});
    if (const auto error = refusal(*enclosure))
        co_return tl::unexpected(UpdateFailure{.error = *error});
    const auto path = target(release);
    if (!path)
        co_return tl::unexpected(path.error());
    auto room = makeRoom(QFileInfo(*path).absolutePath(), enclosure->length);
    if (!room)
        co_return tl::unexpected(room.error());
    // Owned by this coroutine, so that the file is closed, and removed unless it was installed, before the
    // caller gets the outcome.
    const Archive archive = *std::move(room);

    const std::optional<UpdateFailure> failure = co_await download(*enclosure, archive.get(), progress, stop);
    if (stop.stop_requested())
        co_return Outcome::cancelled;
    if (failure)
        co_return tl::unexpected(*failure);

    progress(Step::verifying, archive->size());
    const QFuture<bool> verification =
        QtConcurrent::run([file = archive.get(), signature = *ed25519Signature(enclosure->signature),
                           key = *ed25519Key(m_publicKey)] { return file->isSigned(signature, key); });
    const bool isRight = co_await verification;
    if (stop.stop_requested())
        co_return Outcome::cancelled;
    if (!isRight)
        co_return tl::unexpected(UpdateFailure{.error = UpdateError::signatureWrong});
    // The signature does not cover the kind of archive, and a package in place of the AppImage would not run.
    if (m_form.isAppImage() && archive->isPackage())
        co_return tl::unexpected(UpdateFailure{.error = UpdateError::noFittingArchive});

    const mode_t permissions = m_form.isAppImage() ? permissionsOf(*path) : 0644;
    const QFuture<int> placement = QtConcurrent::run(
        [file = archive.get(), path = *path, permissions] { return file->place(path, permissions); });
    if (const int error = co_await placement)
        co_return tl::unexpected(storingFailure(error, archive->folder()));
    if (m_form.isAppImage())
        co_return Outcome::installed;
    if (stop.stop_requested()) {
        QFile::remove(*path);
        co_return Outcome::cancelled;
    }
    m_workspace.openFile(*path);
    co_return Outcome::handedOver;
}

QCoro::Task<std::optional<UpdateFailure>> UpdateInstaller::download(AppcastEnclosure enclosure,
                                                                    UpdateArchive* archive, Progress progress,
                                                                    std::stop_token stop) {
    int systemError = 0;
    progress(Step::downloading, 0);
    HttpSink sink = [&systemError, archive, progress](QByteArrayView piece) {
        systemError = archive->append(piece);
        progress(Step::downloading, archive->size());
        return systemError == 0;
    };
    HttpDownload wanted{.url = enclosure.url, .limit = enclosure.length};
    const auto status = co_await m_http.download(std::move(wanted), std::move(sink), stop);

    if (systemError != 0)
        co_return storingFailure(systemError, archive->folder());
    if (status && *status != 200)
        co_return UpdateFailure{.error = UpdateError::archiveUnreachable};
    if (status && archive->size() == enclosure.length)
        co_return std::nullopt;
    // Fewer or more bytes than expected.
    const bool isLost = !status && status.error() == TransportError::connectionLost && archive->size() > 0;
    if (status || isLost || status.error() == TransportError::tooLarge)
        co_return UpdateFailure{.error = UpdateError::archiveCut};
    if (status.error() == TransportError::insecure && enclosure.url.scheme() != "https"_L1)
        co_return UpdateFailure{.error = UpdateError::archiveInsecure};
    co_return UpdateFailure{.error = UpdateError::archiveUnreachable, .cause = status.error()};
}

}  // namespace tidemark
