#pragma once

#include <sys/stat.h>
#include <tl/expected.hpp>

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <memory>

namespace tidemark {

/// A file that is being downloaded, under a hidden name of its own (".tidemark-update-….part") and readable
/// by its owner only. It is kept open, so that what was checked is what `place` puts in place. Unless it was
/// placed, it is removed with the object. Errors are those of the system (`errno`).
///
/// Not thread-safe, but every operation may be called on any thread.
class UpdateArchive final {
public:
    /// Makes the file in `folder`, with room for `length` bytes where the file system can promise that.
    [[nodiscard]] static tl::expected<std::unique_ptr<UpdateArchive>, int> create(const QString& folder,
                                                                                  qint64 length);
    UpdateArchive(const UpdateArchive&) = delete;
    UpdateArchive& operator=(const UpdateArchive&) = delete;
    ~UpdateArchive();

    /// Removes what interrupted downloads left in `folder`.
    static void removeLeftovers(const QString& folder);

    [[nodiscard]] const QString& folder() const { return m_folder; }

    /// 0, or the error.
    [[nodiscard]] int append(QByteArrayView piece);
    [[nodiscard]] qint64 size() const { return m_size; }
    /// Whether it begins like a Debian package.
    [[nodiscard]] bool isPackage() const;
    /// Whether the key's owner signed the file, as it is on the disk.
    [[nodiscard]] bool isSigned(const QByteArray& signature, const QByteArray& key) const;

    /// Gives the file that name and those permissions, in one step and for good: a file that has the name is
    /// replaced, and is untouched when this fails. In the same file system only. 0, or the error.
    [[nodiscard]] int place(const QString& path, mode_t permissions);

private:
    UpdateArchive(int descriptor, QString folder, QByteArray name);

    [[nodiscard]] int reserve(qint64 length) const;
    /// Whether nobody has put another file under the name.
    [[nodiscard]] bool hasItsName() const;

    int m_descriptor;
    QString m_folder;
    /// With the folder; empty once placed.
    QByteArray m_name;
    qint64 m_size = 0;
};

}  // namespace tidemark
