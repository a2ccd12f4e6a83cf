#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>
#include <optional>

namespace tidemark {

/// How an archive is installed; told by its media type or the end of its name.
enum class ArchiveKind : quint8 {
    appImage,  ///< the program in one file
    package,   ///< a .deb for the system's installer
    other,
};

/// One archive of a release.
struct AppcastEnclosure {
    QUrl url;
    /// In bytes; 0 when the feed does not say.
    qint64 length = 0;
    ArchiveKind kind = ArchiveKind::other;
    /// Ed25519, in base64 as it stands; empty when the archive is not signed.
    QByteArray signature;

    bool operator==(const AppcastEnclosure&) const = default;
};

/// One release, with the archives that are for this system and processor.
struct AppcastItem {
    /// What is compared.
    QString version;
    /// What the user reads.
    QString displayVersion;
    /// What is new, as plain text; may be empty.
    QString notes;
    /// The oldest C library that the release runs on; empty when the feed does not say.
    QString minimumSystemVersion;
    QList<AppcastEnclosure> enclosures;

    bool operator==(const AppcastItem&) const = default;
};

/// The releases of an appcast: RSS 2.0 with the elements and attributes that Sparkle gave it. Left out are
/// items of a channel, items without a version and archives for other systems. Relative addresses are taken
/// from `feedUrl`. Nothing for a document that is not a whole appcast, has a document type or entities of
/// its own, is nested deeply or lists more than a thousand releases.
[[nodiscard]] std::optional<QList<AppcastItem>> parseAppcast(const QByteArray& feed, const QUrl& feedUrl);

}  // namespace tidemark
