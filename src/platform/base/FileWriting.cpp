#include "platform/base/FileWriting.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFileInfo>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace tidemark {

namespace {

tl::unexpected<QString> systemError() {
    return tl::unexpected(QString::fromLocal8Bit(std::strerror(errno)));
}

/// A descriptor that is closed in any case.
class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    [[nodiscard]] int number() const { return m_number; }
    /// Some file systems report a failed write only here.
    bool close() {
        const int number = std::exchange(m_number, -1);
        return number < 0 || ::close(number) == 0;
    }

private:
    int m_number;
};

bool writeAll(int descriptor, QByteArrayView content) {
    while (!content.isEmpty()) {
        const ssize_t written = ::write(descriptor, content.data(), static_cast<size_t>(content.size()));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        content = content.sliced(written);
    }
    return true;
}

mode_t mode(QFile::Permissions permissions) {
    constexpr std::array bits{std::pair(QFile::ReadOwner, S_IRUSR), std::pair(QFile::WriteOwner, S_IWUSR),
                              std::pair(QFile::ReadGroup, S_IRGRP), std::pair(QFile::WriteGroup, S_IWGRP),
                              std::pair(QFile::ReadOther, S_IROTH), std::pair(QFile::WriteOther, S_IWOTH)};
    mode_t result = 0;
    for (const auto& [permission, bit] : bits)
        if (permissions.testFlag(permission))
            result |= static_cast<mode_t>(bit);
    return result;
}

}  // namespace

tl::expected<void, QString> replaceFile(const QString& path, const QByteArray& content,
                                        QFile::Permissions permissions) {
    const QFileInfo info(path);
    const QByteArray target =
        QFile::encodeName(info.isSymLink() ? info.symLinkTarget() : info.absoluteFilePath());
    QByteArray temporary = target + ".XXXXXX";
    Descriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
    if (file.number() < 0)
        return systemError();
    const auto fail = [&temporary] {
        const auto error = systemError();
        ::unlink(temporary.constData());
        return error;
    };
    if (::fchmod(file.number(), mode(permissions)) != 0 || !writeAll(file.number(), content) ||
        ::fsync(file.number()) != 0 || !file.close() ||
        std::rename(temporary.constData(), target.constData()) != 0)
        return fail();
    // The new name is on the disk once its folder is. Nothing is lost if that fails: either name leads to a
    // whole file.
    const QByteArray folder = target.first(std::max<qsizetype>(target.lastIndexOf('/'), 1));
    const Descriptor directory(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.number() >= 0)
        ::fsync(directory.number());
    return {};
}

std::optional<QByteArray> readFile(const QString& path, qint64 maximumSize) {
    const QFileInfo info(path);
    QFile file(path);
    if (!info.isFile() || info.size() > maximumSize || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

}  // namespace tidemark
