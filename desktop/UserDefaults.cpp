#include "desktop/UserDefaults.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMetaType>
#include <QMutexLocker>
#include <QSettings>

namespace tidemark {

namespace {

/// Whether the file at `path` now holds exactly `values`.
bool writeFile(const QString& path, const QVariantHash& values) {
    QDir().mkpath(QFileInfo(path).path());
    QSettings file(path, QSettings::IniFormat);
    file.clear();
    for (const auto& [key, value] : values.asKeyValueRange())
        file.setValue(key, value);
    file.sync();
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
    return file.status() != QSettings::AccessError;
}

}  // namespace

UserDefaults::UserDefaults(const QString& path) : m_path(path) {
    m_writer.setMaxThreadCount(1);
    const QSettings file(path, QSettings::IniFormat);
    const QStringList keys = file.allKeys();
    for (const QString& key : keys) {
        // A damaged file may give an empty one, which QSettings itself does not take.
        if (!key.isEmpty())
            m_values.insert(key, file.value(key));
    }
}

UserDefaults::~UserDefaults() {
    waitForWrites();
    // One more try for what failed.
    if (!m_pending.isEmpty())
        writeFile(m_path, m_pending);
}

QStringList UserDefaults::stringArray(const QString& key) const {
    // The file keeps a list of one string as the string.
    const QVariant value = m_values.value(key);
    const int type = value.typeId();
    if (type == QMetaType::QStringList || type == QMetaType::QString)
        return value.toStringList();
    return {};
}

bool UserDefaults::boolean(const QString& key) const {
    // The file keeps it as a word.
    const QVariant value = m_values.value(key);
    return value == QVariant(true) || value == QVariant(QStringLiteral("true"));
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
    // Whatever was set meanwhile has its own write scheduled.
    if (isWritten && !m_isWriteScheduled)
        m_pending.clear();
}

}  // namespace tidemark
