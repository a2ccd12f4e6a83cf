#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>
#include <optional>

namespace tidemark {

/// The kind of an archive, determined by its media type or the suffix of its name.
enum class ArchiveKind : quint8 {
    appImage,  ///< the program as one file
    package,   ///< a .deb for the system's package installer
    other,
};

/// One archive of a release.
struct AppcastEnclosure {
    QUrl url;
    /// In bytes; 0 when the feed does not state it.
    qint64 length = 0;
    ArchiveKind kind = ArchiveKind::other;
    /// Ed25519 signature in base64, as in the feed; empty when the archive is not signed.
    QByteArray signature;

    bool operator==(const AppcastEnclosure&) const = default;
};

/// One release with its archives for this system and processor.
struct AppcastItem {
    /// For comparisons.
    QString version;
    /// For the user.
    QString displayVersion;
    /// The release notes as plain text; may be empty.
    QString notes;
    /// The oldest version of the C library that the release runs with; empty when the feed does not state it.
    QString minimumSystemVersion;
    QList<AppcastEnclosure> enclosures;

    bool operator==(const AppcastItem&) const = default;
};

/// The releases of an appcast (RSS 2.0 with Sparkle's elements and attributes). Omits items of a channel,
/// items without a version, and archives for other systems. Relative addresses are resolved against
/// `feedUrl`. Gives nothing for a document that is not a complete appcast, has a document type or entities of
/// its own, is nested more than 64 levels deep, or lists more than 1,000 releases.
[[nodiscard]] std::optional<QList<AppcastItem>> parseAppcast(const QByteArray& feed, const QUrl& feedUrl);

}  // namespace tidemark
