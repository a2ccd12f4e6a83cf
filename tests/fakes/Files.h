#pragma once

#include <sys/resource.h>

#include <QDir>
#include <QFile>
#include <QTest>
#include <csignal>
#include <tuple>

namespace tidemark {

/// The contents of a file; null when it cannot be read.
inline QByteArray contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Writes a file. Creates its folder when there is none.
inline void writeFile(const QString& path, const QByteArray& contents) {
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(contents), contents.size());
}

/// Limits the size of all files that this process writes. Larger writes fail as on a full disk.
class FileSizeLimit final {
public:
    explicit FileSizeLimit(rlim_t size) : m_formerHandler(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &m_former);
        const rlimit limit{.rlim_cur = size, .rlim_max = m_former.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &m_former);
        std::ignore = std::signal(SIGXFSZ, m_formerHandler);
    }

private:
    void (*m_formerHandler)(int);
    rlimit m_former{};
};

}  // namespace tidemark
