#pragma once

#include <QObject>
#include <QString>
#include <memory>

namespace tidemark {

class ApplicationService;

/// Makes this the one process of its identifier in the user's session, and is the bus object that other
/// processes and launchers talk to: org.freedesktop.Application on the well-known name `identifier`.
class SingleInstance final : public QObject {
    Q_OBJECT

public:
    enum class Role : quint8 {
        first,       ///< this process owns the name
        second,      ///< another process owns it and has been asked to come forward
        standalone,  ///< there is no session bus to ask
    };

    /// Made before the application object, it still sees the start-up token that the launcher left in the
    /// environment; Qt takes it out.
    explicit SingleInstance(QString identifier);
    ~SingleInstance() override;

    /// Takes the name or hands over to its owner. Blocks for the bus's answers, a few seconds at most when
    /// the other process does not answer. Call once.
    [[nodiscard]] Role claim();
    /// Leaves the name to another process.
    void release();

Q_SIGNALS:
    /// Somebody started the program again or activated it from a launcher. `activationToken` is what the
    /// desktop gave along (may be empty). Calls that come before the event loop runs are not lost.
    void activated(const QString& activationToken);

private:
    [[nodiscard]] Role negotiate();

    QString m_identifier;
    QString m_startupToken;
    std::unique_ptr<ApplicationService> m_service;
};

}  // namespace tidemark
