#pragma once

#include <QCoroTask>
#include <QList>
#include <QObject>
#include <optional>
#include <stop_token>

#include "app/engine/AccountWatch.h"
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
    ProjectLoader(AppState& state, VercelClients clients, Clock& clock, AccountWatch& accounts,
                  std::stop_token quit);

    /// Fetches the lists of all accounts, one after the other, and again every hour. An account that fails
    /// keeps its known projects. An account that the network did not let through, as at a login, or whose
    /// request the service could not answer just then (429, 500, 502, 503, 504), is asked again every minute
    /// until it answers. Projects of accounts that are not configured any more leave the state. A new load
    /// stops the one under way, whose accounts may be outdated.
    void loadProjects();
    /// Fetches the lists once more, without telling that they are loading: somebody looks at them. Does
    /// nothing while a fetch is under way or within a minute of the last one.
    void refreshLists();

Q_SIGNALS:
    /// A load has ended: polling starts anew. Not emitted without an account to ask.
    void loaded();
    /// Lists have come later than those of the load: late ones, or newer ones.
    void listsRefreshed();

private:
    /// Whether a load shows that it is under way, or only renews what is there.
    enum class LoadKind : quint8 { shown, quiet };

    void start(LoadKind kind);
    [[nodiscard]] QCoro::Task<> load(QList<VercelAccount> accounts, LoadKind kind, std::stop_token stop);
    /// Fetches the lists of these accounts. Gives those to ask again.
    [[nodiscard]] QCoro::Task<QList<VercelAccount>> fetchProjects(QList<VercelAccount> accounts,
                                                                  std::stop_token stop);
    /// Waits until the lists are old, and fetches those that are missing meanwhile.
    [[nodiscard]] QCoro::Task<> fetchLateProjects(QList<VercelAccount> missing, std::stop_token stop);
    [[nodiscard]] bool isStopped(const std::stop_token& stop) const {
        return stop.stop_requested() || m_quit.stop_requested();
    }

    AppState& m_state;
    VercelClients m_clients;
    Clock& m_clock;
    AccountWatch& m_accounts;
    std::stop_token m_quit;
    /// When the lists of all accounts were last asked for.
    std::optional<Clock::TimePoint> m_fetchedAt;
    /// The load under way, and afterwards the wait for late lists and for the next load.
    TaskHandle m_loadTask;
    /// Last, so that its tasks end first.
    TaskScope m_tasks;
};

}  // namespace tidemark
