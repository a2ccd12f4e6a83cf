#pragma once

#include <tl/expected.hpp>

#include <QByteArray>
#include <QFile>
#include <QString>
#include <optional>

namespace tidemark {

/// Replaces the contents of a file in one step: readers see the old contents or the new, and after a crash or
/// a power failure one of the two is there. The file gets exactly these permissions. A symbolic link is
/// followed. If anything fails, a full disk for example, the old file stays as it is, and the result is the
/// system's description of the error.
///
/// QSaveFile of Qt 6.4 does not notice that its last write fails, and leaves an empty file.
[[nodiscard]] tl::expected<void, QString> replaceFile(const QString& path, const QByteArray& content,
                                                      QFile::Permissions permissions);

/// The content of a regular file of at most `maximumSize` bytes; nothing otherwise, or when it cannot be
/// read. Pipes and devices, whose reading may never end, are not opened.
[[nodiscard]] std::optional<QByteArray> readFile(const QString& path, qint64 maximumSize);

}  // namespace tidemark
