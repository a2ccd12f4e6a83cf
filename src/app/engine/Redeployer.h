#pragma once

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QString>
#include <stop_token>

#include "app/engine/DeploymentPoller.h"
#include "app/engine/VercelClients.h"
#include "notify/NotificationManager.h"
#include "platform/base/Clock.h"
#include "platform/base/TaskScope.h"
#include "state/AppState.h"

namespace tidemark {

/// Deploys a project again, at the user's request. UI thread only.
class Redeployer final : public QObject {
    Q_OBJECT

public:
    /// All of them outlive the redeployer. Requests end when `quit` is stopped.
    Redeployer(AppState& state, VercelClients clients, Clock& clock, DeploymentPoller& poller,
               NotificationManager& notifications, std::stop_token quit);

    /// Lets views redeploy through the state. Their wait ends with the redeploy, or with this object.
    void setupRedeployHandler();

    /// Redeploys the newest known deployment of a project and, once the new one can be listed, polls the
    /// project once. A failure is stored with the project and announced. Does nothing without such a
    /// deployment or without an account with a token.
    [[nodiscard]] QCoro::Task<> redeployProject(QString projectId);

private:
    [[nodiscard]] static QCoro::Task<> redeployAndWait(QPointer<Redeployer> redeployer, QString projectId);
    void tellFailure(const QString& projectId, const QString& error);

    AppState& m_state;
    VercelClients m_clients;
    Clock& m_clock;
    DeploymentPoller& m_poller;
    NotificationManager& m_notifications;
    std::stop_token m_quit;
    /// Last, so that its tasks end first.
    TaskScope m_tasks;
};

}  // namespace tidemark
