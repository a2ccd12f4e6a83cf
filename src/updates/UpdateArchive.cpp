#include "updates/UpdateArchive.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "updates/Ed25519.h"

namespace tidemark {

namespace {

constexpr auto prefix = QLatin1StringView("/.tidemark-update-");
constexpr auto suffix = QLatin1StringView(".part");

/// Makes a rename durable across a power failure.
void syncFolder(const QString& folder) {
    const int descriptor = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    ::fsync(descriptor);
    ::close(descriptor);
}

}  // namespace

UpdateArchive::UpdateArchive(int descriptor, QString folder, QByteArray name)
    : m_descriptor(descriptor), m_folder(std::move(folder)), m_name(std::move(name)) {}

UpdateArchive::~UpdateArchive() {
    if (!m_name.isEmpty() && hasItsName())
        ::unlink(m_name.constData());
    ::close(m_descriptor);
}

tl::expected<std::unique_ptr<UpdateArchive>, int> UpdateArchive::create(const QString& folder,
                                                                        qint64 length) {
    QByteArray name = QFile::encodeName(folder + prefix + QLatin1String("XXXXXX") + suffix);
    // mkostemps creates the file readable by the owner only and follows no link.
    const int descriptor = ::mkostemps(name.data(), static_cast<int>(suffix.size()), O_CLOEXEC);
    if (descriptor < 0)
        return tl::unexpected(errno);
    std::unique_ptr<UpdateArchive> archive(new UpdateArchive(descriptor, folder, std::move(name)));
    if (const int error = archive->reserve(length))
        return tl::unexpected(error);
    return archive;
}

void UpdateArchive::removeLeftovers(const QString& folder) {
    const QString pattern = prefix.mid(1) + QLatin1Char('*') + suffix;
    const QDir parts(folder, pattern, QDir::NoSort, QDir::Files | QDir::Hidden | QDir::NoSymLinks);
    for (const QString& name : parts.entryList())
        QFile::remove(parts.filePath(name));
}

int UpdateArchive::reserve(qint64 length) const {
    if (::fallocate(m_descriptor, FALLOC_FL_KEEP_SIZE, 0, length) == 0)
        return 0;
    const bool isUnknown = errno == EOPNOTSUPP || errno == ENOSYS || errno == EINTR || errno == EINVAL;
    return isUnknown ? 0 : errno;
}

int UpdateArchive::append(QByteArrayView piece) {
    while (!piece.isEmpty()) {
        const ssize_t size = ::write(m_descriptor, piece.data(), static_cast<size_t>(piece.size()));
        if (size < 0 && errno == EINTR)
            continue;
        if (size <= 0)
            return size == 0 ? ENOSPC : errno;
        m_size += size;
        piece = piece.sliced(size);
    }
    return 0;
}

bool UpdateArchive::isPackage() const {
    constexpr std::string_view magic = "!<arch>\n";
    std::array<char, magic.size()> start{};
    return ::pread(m_descriptor, start.data(), start.size(), 0) == ssize_t{start.size()} &&
           std::string_view(start.data(), start.size()) == magic;
}

bool UpdateArchive::isSigned(const QByteArray& signature, const QByteArray& key) const {
    struct stat state{};
    if (::fstat(m_descriptor, &state) != 0 || state.st_size != m_size || m_size == 0)
        return false;
    const auto length = static_cast<size_t>(m_size);
    void* bytes = ::mmap(nullptr, length, PROT_READ, MAP_PRIVATE, m_descriptor, 0);
    if (bytes == MAP_FAILED)
        return false;
    const bool result =
        tidemark::isSigned(QByteArrayView(static_cast<const char*>(bytes), m_size), signature, key);
    ::munmap(bytes, length);
    return result;
}

int UpdateArchive::place(const QString& path, mode_t permissions) {
    // Releases reserved bytes that were not needed. The content must be on the disk before the rename,
    // because a power failure could otherwise leave an empty file under the new name.
    if (::ftruncate(m_descriptor, m_size) != 0 || ::fchmod(m_descriptor, permissions) != 0 ||
        ::fsync(m_descriptor) != 0)
        return errno;
    if (!hasItsName())
        return ESTALE;
    if (::rename(m_name.constData(), QFile::encodeName(path).constData()) != 0)
        return errno;
    m_name.clear();
    syncFolder(m_folder);
    return 0;
}

bool UpdateArchive::hasItsName() const {
    struct stat own{};
    struct stat named{};
    return ::fstat(m_descriptor, &own) == 0 && ::lstat(m_name.constData(), &named) == 0 &&
           own.st_dev == named.st_dev && own.st_ino == named.st_ino;
}

}  // namespace tidemark
