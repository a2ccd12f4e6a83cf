#pragma once

#include <QObject>

namespace tidemark {

/// Reports when a keychain that could not be read may have become readable.
class KeychainWatcher : public QObject {
    Q_OBJECT

Q_SIGNALS:
    /// The store has appeared or has been unlocked. The signal may come several times for one event, and also
    /// for other events, so only reading the store tells for sure.
    void mayBeReadable();
};

}  // namespace tidemark
