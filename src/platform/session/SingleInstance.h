#pragma once

#include <QObject>
#include <QString>
#include <memory>

namespace tidemark {

class ApplicationService;

/// Ensures that only one process of an identifier runs in the desktop session: it owns the bus name
/// `identifier` and exports org.freedesktop.Application there, which later processes and launchers call.
class SingleInstance final : public QObject {
    Q_OBJECT

public:
    enum class Role : quint8 {
        first,       ///< this process owns the name
        second,      ///< another process owns the name and has been asked to show itself
        standalone,  ///< there is no session bus to ask
    };

    /// Construct it before the application object, because Qt removes the launcher's start-up token from the
    /// environment.
    explicit SingleInstance(QString identifier);
    ~SingleInstance() override;

    /// Takes the name or activates its owner. Blocks until the bus and the owner have answered, up to two
    /// seconds for each call. The first process makes one call and a second process two, or ten at most when
    /// the owner keeps changing. Call once, before anything is shown.
    [[nodiscard]] Role claim();
    /// Gives up the name.
    void release();

Q_SIGNALS:
    /// The program was started again or activated from a launcher. `activationToken` comes from the desktop
    /// and may be empty. Calls that arrive before the event loop runs are delivered when it does.
    void activated(const QString& activationToken);

private:
    [[nodiscard]] Role negotiate();

    QString m_identifier;
    QString m_startupToken;
    std::unique_ptr<ApplicationService> m_service;
};

}  // namespace tidemark
