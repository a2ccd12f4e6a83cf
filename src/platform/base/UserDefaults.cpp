#include "platform/base/UserDefaults.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMetaType>
#include <QMutexLocker>
#include <QSettings>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 maximumFileSize = qint64{64} * 1024 * 1024;

/// Whether the file at `path` now holds exactly `values`.
bool writeFile(const QString& path, const QVariantHash& values) {
    QDir().mkpath(QFileInfo(path).path());
    QSettings file(path, QSettings::IniFormat);
    file.clear();
    for (const auto& [key, value] : values.asKeyValueRange())
        file.setValue(key, value);
    file.sync();
    if (file.status() == QSettings::AccessError)
        return false;
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
    return true;
}

}  // namespace

UserDefaults::UserDefaults(const QString& path) : m_path(path) {
    m_writer.setMaxThreadCount(1);
    // Reading a pipe or a device would never end, and reading gigabytes of garbage would take too long.
    const QFileInfo info(path);
    if (info.exists() && (!info.isFile() || info.size() > maximumFileSize)) {
        m_isWritable = false;
        return;
    }
    // QSettings would wait forever for a lock file that was left by a crash on a machine of another name.
    // Only the first process of the desktop session writes. A second one may also get here before it hands
    // over to the first, and could at worst remove the lock of a write, which replaces the file in one step
    // anyway.
    QFile::remove(path + u".lock"_s);
    const QSettings file(path, QSettings::IniFormat);
    const QStringList keys = file.allKeys();
    m_isWritable = file.status() != QSettings::AccessError;
    for (const QString& key : keys) {
        // A damaged file may contain an empty key, which QSettings does not accept.
        if (!key.isEmpty())
            m_values.insert(key, file.value(key));
    }
}

UserDefaults::~UserDefaults() {
    waitForWrites();
    // Repeats a write that failed.
    if (!m_pending.isEmpty())
        writeFile(m_path, m_pending);
}

QStringList UserDefaults::stringArray(const QString& key) const {
    // The ini format stores a list of one string as a string.
    const QVariant value = m_values.value(key);
    const int type = value.typeId();
    if (type == QMetaType::QStringList || type == QMetaType::QString)
        return value.toStringList();
    return {};
}

bool UserDefaults::boolean(const QString& key) const {
    // The ini format stores a bool as text.
    const QVariant value = m_values.value(key);
    return value == QVariant(true) || value == QVariant(u"true"_s);
}

QByteArray UserDefaults::data(const QString& key) const {
    const QVariant value = m_values.value(key);
    return value.typeId() == QMetaType::QByteArray ? value.toByteArray() : QByteArray();
}

QVariant UserDefaults::value(const QString& key) const {
    return m_values.value(key);
}

void UserDefaults::setValue(const QString& key, const QVariant& value) {
    m_values.insert(key, value);
    if (!m_isWritable)
        return;
    const QMutexLocker lock(&m_mutex);
    m_pending = m_values;
    if (m_isWriteScheduled)
        return;
    m_isWriteScheduled = true;
    m_writer.start([this] { write(); });
}

void UserDefaults::waitForWrites() {
    m_writer.waitForDone();
}

void UserDefaults::write() {
    QMutexLocker lock(&m_mutex);
    m_isWriteScheduled = false;
    const QVariantHash values = m_pending;
    lock.unlock();
    const bool isWritten = writeFile(m_path, values);
    lock.relock();
    // Values that were set meanwhile have scheduled a write of their own.
    if (isWritten && !m_isWriteScheduled)
        m_pending.clear();
}

}  // namespace tidemark
