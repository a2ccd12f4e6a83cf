#pragma once

#include <QByteArray>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <QThreadPool>
#include <QVariant>
#include <QVariantHash>
#include <QVariantMap>

namespace tidemark {

/// Small persistent values by key, in an ini file (QSettings). Reads come from memory. Each change is written
/// at once, on a worker thread, so that a slow disk does not block the UI thread; changes during a write are
/// written together after it. A write that fails (full disk) is repeated with the next one or by the
/// destructor, which waits for it. A file that exists but cannot be read is never written: the values then
/// last until the program ends.
class UserDefaults {
public:
    /// The ini file at `path`; a missing or unreadable one starts empty.
    explicit UserDefaults(const QString& path);
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;
    ~UserDefaults();

    /// The empty value when absent or of another type.
    [[nodiscard]] QStringList stringArray(const QString& key) const;
    [[nodiscard]] bool boolean(const QString& key) const;
    [[nodiscard]] QByteArray data(const QString& key) const;
    /// An invalid variant when absent. The ini format does not keep the type of lists: after a restart, an
    /// empty list reads as absent and a list of one string as a string.
    [[nodiscard]] QVariant value(const QString& key) const;

    void setValue(const QString& key, const QVariant& value);

    /// Blocks until everything set so far has been written or has failed.
    void waitForWrites();

private:
    void write();

    QString m_path;
    QVariantHash m_values;
    bool m_isWritable = true;
    QMutex m_mutex;
    /// Values that are not in the file yet; empty when all are.
    QVariantHash m_pending;
    bool m_isWriteScheduled = false;
    QThreadPool m_writer;
};

}  // namespace tidemark
