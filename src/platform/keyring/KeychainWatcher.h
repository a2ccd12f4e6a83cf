#pragma once

#include <QObject>

namespace tidemark {

/// Tells when a keychain that could not be read perhaps can be read now.
class KeychainWatcher : public QObject {
    Q_OBJECT

Q_SIGNALS:
    /// The store has appeared, or has been unlocked. It may come more than once for the same event, and for
    /// others as well; whoever wants to know for sure reads.
    void mayBeReadable();
};

}  // namespace tidemark
