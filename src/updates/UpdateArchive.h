#pragma once

#include <sys/stat.h>
#include <tl/expected.hpp>

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <memory>

namespace tidemark {

/// A file that is being downloaded, with a hidden temporary name (".tidemark-update-….part") and readable by
/// its owner only. It stays open, so that `place` moves the very file that was verified. The destructor
/// removes it unless it was placed. Errors are values of `errno`.
///
/// Callable from any thread, but not from several at a time.
class UpdateArchive final {
public:
    /// Creates the file in `folder` and reserves `length` bytes for it where the file system supports that.
    [[nodiscard]] static tl::expected<std::unique_ptr<UpdateArchive>, int> create(const QString& folder,
                                                                                  qint64 length);
    UpdateArchive(const UpdateArchive&) = delete;
    UpdateArchive& operator=(const UpdateArchive&) = delete;
    ~UpdateArchive();

    /// Removes the files of interrupted downloads from `folder`.
    static void removeLeftovers(const QString& folder);

    [[nodiscard]] const QString& folder() const { return m_folder; }

    /// Returns 0 or the error.
    [[nodiscard]] int append(QByteArrayView piece);
    [[nodiscard]] qint64 size() const { return m_size; }
    /// Whether the file begins like a Debian package.
    [[nodiscard]] bool isPackage() const;
    /// Whether the signature of the file on the disk was made with the private key for `key`.
    [[nodiscard]] bool isSigned(const QByteArray& signature, const QByteArray& key) const;

    /// Renames the file to `path`, in the same file system, with these permissions. An existing file is
    /// replaced atomically, and untouched when this fails. Returns 0 or the error.
    [[nodiscard]] int place(const QString& path, mode_t permissions);

private:
    UpdateArchive(int descriptor, QString folder, QByteArray name);

    [[nodiscard]] int reserve(qint64 length) const;
    /// Whether the name still belongs to this file and not to another one that replaced it.
    [[nodiscard]] bool hasItsName() const;

    int m_descriptor;
    QString m_folder;
    /// The path of the file; empty once it is placed.
    QByteArray m_name;
    qint64 m_size = 0;
};

}  // namespace tidemark
