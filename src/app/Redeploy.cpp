#include <QCoroFuture>

#include "app/AppDelegate.h"

namespace tidemark {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// By then the new deployment is in the API's list.
constexpr auto listingDelay = 2s;

}  // namespace

void AppDelegate::setupRedeployHandler() {
    m_appState.setRedeployHandler([delegate = QPointer(this)](const QString& projectId) {
        return redeployAndWait(delegate, projectId);
    });
}

QCoro::Task<> AppDelegate::redeployAndWait(QPointer<AppDelegate> delegate, QString projectId) {
    if (!delegate)
        co_return;
    // A task of the delegate's own, which ends with the delegate whoever waits for it.
    const TaskScope::Body redeploy = [delegate = delegate.data(), projectId](std::stop_token) {
        return delegate->redeployProject(projectId);
    };
    const QFuture<void> work = delegate->m_tasks.startAwaited(redeploy);
    co_await work;
}

QCoro::Task<> AppDelegate::redeployProject(QString projectId) {
    const auto client = clientForProject(projectId);
    const auto latest = m_appState.deployments().constFind(projectId);
    if (!client || latest == m_appState.deployments().cend())
        co_return;
    const QString deploymentId = latest->id;
    const auto redeployed = co_await client->redeployDeployment(deploymentId, m_quit.get_token());
    if (isQuitting())
        co_return;
    if (!redeployed) {
        m_appState.setError(projectId, u"Redeploy failed: "_s + description(redeployed.error()));
        updateMainButton();
        co_return;
    }
    co_await m_services.clock.sleep(listingDelay, m_quit.get_token());
    if (isQuitting())
        co_return;
    co_await fetchAndUpdate(projectId, *client, m_appState.productionOnly());
}

}  // namespace tidemark
