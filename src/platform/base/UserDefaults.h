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

/// Small persisted values by key, in an ini file (QSettings). Reads come from memory. Every write goes to
/// the file at once on a worker thread, so that a slow disk never holds up the UI thread; what is set while
/// the file is being written goes out together afterwards. The destructor waits for the last write. One that
/// fails (full disk) is kept and tried again with the next, or at the end.
/// A file that is there but cannot be read is left alone: the values then last for this run.
class UserDefaults {
public:
    /// The ini file at `path`; a missing or unreadable one starts empty.
    explicit UserDefaults(const QString& path);
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;
    ~UserDefaults();

    /// Absent, or of another type than asked for: the empty value.
    [[nodiscard]] QStringList stringArray(const QString& key) const;
    [[nodiscard]] bool boolean(const QString& key) const;
    [[nodiscard]] QByteArray data(const QString& key) const;
    /// An invalid variant when absent. Of lists the type is not kept: an empty one reads as absent and one of
    /// a single string as a string once the program has been started again.
    [[nodiscard]] QVariant value(const QString& key) const;

    void setValue(const QString& key, const QVariant& value);

    /// Waits until everything set so far has been written or has failed.
    void waitForWrites();

private:
    void write();

    QString m_path;
    QVariantHash m_values;
    bool m_isWritable = true;
    QMutex m_mutex;
    /// What the file is to hold, until it does.
    QVariantHash m_pending;
    bool m_isWriteScheduled = false;
    QThreadPool m_writer;
};

}  // namespace tidemark
