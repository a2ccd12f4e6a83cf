#pragma once

#include <QCoroTask>
#include <QList>
#include <QObject>
#include <stop_token>

#include "app/engine/VercelClients.h"
#include "platform/base/Clock.h"
#include "platform/base/TaskScope.h"
#include "state/AppState.h"

namespace tidemark {

/// Fetches the project lists of the configured accounts and hands them to the state. UI thread only.
class ProjectLoader final : public QObject {
    Q_OBJECT

public:
    /// All of them outlive the loader. Nothing is loaded or emitted any more once `quit` is stopped.
    ProjectLoader(AppState& state, VercelClients clients, Clock& clock, std::stop_token quit);

    /// Fetches the lists of all accounts, one after the other. An account that fails keeps its known
    /// projects. An account that the network did not let through, as at a login, or whose request the service
    /// could not answer just then (429, 500, 502, 503, 504), is asked again every minute until it answers.
    /// Projects of accounts that are not configured any more leave the state. A new load stops the one under
    /// way, whose accounts may be outdated.
    void loadProjects();

Q_SIGNALS:
    /// A load has ended: polling starts anew. Not emitted without an account to ask.
    void loaded();
    /// A list that was late has come.
    void lateListLoaded();

private:
    [[nodiscard]] QCoro::Task<> load(AppConfiguration configuration, std::stop_token stop);
    /// Fetches the lists of these accounts. Gives those to ask again.
    [[nodiscard]] QCoro::Task<QList<VercelAccount>> fetchProjects(QList<VercelAccount> accounts,
                                                                  std::stop_token stop);
    [[nodiscard]] QCoro::Task<> fetchLateProjects(QList<VercelAccount> missing, std::stop_token stop);

    AppState& m_state;
    VercelClients m_clients;
    Clock& m_clock;
    std::stop_token m_quit;
    /// The load under way, and afterwards the wait for late lists.
    TaskHandle m_loadTask;
    /// Last, so that its tasks end first.
    TaskScope m_tasks;
};

}  // namespace tidemark
