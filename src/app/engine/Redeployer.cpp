#include "app/engine/Redeployer.h"

#include <QCoroFuture>
#include <utility>

namespace tidemark {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// By then the new deployment is in the API's list.
constexpr auto listingDelay = 2s;

}  // namespace

Redeployer::Redeployer(AppState& state, VercelClients clients, Clock& clock, DeploymentPoller& poller,
                       NotificationManager& notifications, std::stop_token quit)
    : m_state(state),
      m_clients(std::move(clients)),
      m_clock(clock),
      m_poller(poller),
      m_notifications(notifications),
      m_quit(std::move(quit)) {}

void Redeployer::setupRedeployHandler() {
    m_state.setRedeployHandler([redeployer = QPointer(this)](const QString& projectId) {
        return redeployAndWait(redeployer, projectId);
    });
}

QCoro::Task<> Redeployer::redeployAndWait(QPointer<Redeployer> redeployer, QString projectId) {
    if (!redeployer)
        co_return;
    // A task of our own, which ends with us whoever waits for it.
    const TaskScope::Body redeploy = [redeployer = redeployer.data(), projectId](std::stop_token) {
        return redeployer->redeployProject(projectId);
    };
    const QFuture<void> work = redeployer->m_tasks.startAwaited(redeploy);
    co_await work;
}

QCoro::Task<> Redeployer::redeployProject(QString projectId) {
    const auto client = m_clients.forProject(projectId);
    const auto latest = m_state.deployments().constFind(projectId);
    if (!client || latest == m_state.deployments().cend())
        co_return;
    const QString deploymentId = latest->id;
    const auto redeployed = co_await client->redeployDeployment(deploymentId, m_quit);
    if (m_quit.stop_requested())
        co_return;
    if (!redeployed) {
        tellFailure(projectId, u"Redeploy failed: "_s + description(redeployed.error()));
        co_return;
    }
    co_await m_clock.sleep(listingDelay, m_quit);
    if (m_quit.stop_requested())
        co_return;
    co_await m_poller.fetchAndUpdate(projectId, *client, m_state.productionOnly());
}

void Redeployer::tellFailure(const QString& projectId, const QString& error) {
    m_state.setRedeployError(projectId, error);
    // The row's text lasts only until the next poll, and the popover may be closed by now.
    const auto project = m_state.project(projectId);
    m_notifications.announce(project ? project->name : projectId, error, NotificationManager::Opens::popover);
}

}  // namespace tidemark
