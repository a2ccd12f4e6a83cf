#pragma once

#include <qqmlintegration.h>

#include <QAbstractItemModel>
#include <QColor>
#include <QObject>
#include <QSet>
#include <QString>
#include <functional>
#include <stop_token>

#include "platform/base/Clock.h"
#include "platform/base/DeferredCall.h"
#include "platform/base/TaskScope.h"
#include "platform/session/Workspace.h"
#include "popover/PanelSummary.h"
#include "popover/RowListModel.h"
#include "state/AppState.h"

namespace tidemark {

/// The content and the actions of the popover's views. It follows the state while it is active. Any number of
/// changes of the state in one turn of the event loop make one refresh.
///
/// Only visible rows have a view, so the state of rows that must outlive it is kept here, by project id.
class PopoverModel final : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The popover is given one.")
    Q_PROPERTY(QString versionText READ versionText CONSTANT FINAL)
    Q_PROPERTY(QColor platformDotColor READ platformDotColor NOTIFY refreshed FINAL)
    Q_PROPERTY(QString platformToolTip READ platformToolTip NOTIFY refreshed FINAL)
    Q_PROPERTY(tidemark::PanelSummary summary READ summary NOTIFY summaryChanged FINAL)
    Q_PROPERTY(bool productionOnly READ productionOnly NOTIFY refreshed FINAL)
    Q_PROPERTY(QString productionToolTip READ productionToolTip NOTIFY refreshed FINAL)
    Q_PROPERTY(QAbstractItemModel* trackedProjects READ trackedProjects CONSTANT FINAL)
    Q_PROPERTY(QAbstractItemModel* managedProjects READ managedProjects CONSTANT FINAL)
    /// The cards of the analytics list, by the ids of their zones.
    Q_PROPERTY(QAbstractItemModel* analyticsCards READ analyticsCards CONSTANT FINAL)
    Q_PROPERTY(bool isLoadingAnalytics READ isLoadingAnalytics NOTIFY refreshed FINAL)
    Q_PROPERTY(QString analyticsNotice READ analyticsNotice NOTIFY refreshed FINAL)
    Q_PROPERTY(QString filter READ filter WRITE setFilter NOTIFY filterChanged FINAL)

public:
    /// The actions that lead outside of the popover. None is called while the model is destroyed.
    struct Actions {
        std::function<void()> onOpenPreferences;
        std::function<void()> onOpenDashboard;
        /// The list of all projects is on the screen.
        std::function<void()> onManageProjects;
        std::function<void()> onQuit;
        std::function<void()> onOpenAnalyticsDashboard;
        /// Loads the traffic of the sites, if need be or in any case.
        std::function<QCoro::Task<>(AnalyticsReload, std::stop_token)> loadAnalytics;
    };

    /// All of them outlive the model. An empty version reads "dev".
    PopoverModel(AppState& state, const Clock& clock, Workspace& workspace, const QString& version,
                 Actions actions);
    ~PopoverModel() override;

    /// Follows the state from now on, beginning with a refresh, or no longer. Becoming active also folds all
    /// rows and empties the filter.
    void setActive(bool active);
    /// A minute has passed: ages are computed anew.
    void refreshAges();

    [[nodiscard]] const AppState& state() const { return m_state; }
    [[nodiscard]] Clock::TimePoint now() const { return m_clock.now(); }

    [[nodiscard]] QString versionText() const { return m_versionText; }
    [[nodiscard]] QColor platformDotColor() const;
    [[nodiscard]] QString platformToolTip() const;
    [[nodiscard]] const PanelSummary& summary() const { return m_summary; }
    [[nodiscard]] bool productionOnly() const { return m_state.productionOnly(); }
    [[nodiscard]] QString productionToolTip() const;
    /// The deployments list.
    [[nodiscard]] QAbstractItemModel* trackedProjects() { return &m_trackedProjects; }
    /// The tracked and the ignored projects that match the filter.
    [[nodiscard]] QAbstractItemModel* managedProjects() { return &m_managedProjects; }
    [[nodiscard]] QAbstractItemModel* analyticsCards() { return &m_analyticsCards; }
    /// Whether there is nothing to show but that a load is under way.
    [[nodiscard]] bool isLoadingAnalytics() const;
    /// The text in place of the cards; empty while there are cards or a load is under way.
    [[nodiscard]] QString analyticsNotice() const;
    [[nodiscard]] QString filter() const { return m_filter; }
    void setFilter(const QString& filter);

    [[nodiscard]] bool isExpanded(const QString& projectId) const { return m_expanded.contains(projectId); }
    [[nodiscard]] bool isCardExpanded(const QString& zoneId) const {
        return m_expandedCards.contains(zoneId);
    }
    [[nodiscard]] bool isRedeploying(const QString& projectId) const {
        return m_redeploying.contains(projectId);
    }

    Q_INVOKABLE void close();
    Q_INVOKABLE void openPreferences();
    Q_INVOKABLE void openDashboard();
    Q_INVOKABLE void openAnalyticsDashboard();
    Q_INVOKABLE void enterManage();
    Q_INVOKABLE void quit();
    /// Opens a web page; anything else is ignored.
    Q_INVOKABLE void open(const QString& address);
    Q_INVOKABLE void toggleProductionOnly();
    /// The analytics are on the screen: what is stale is loaded, until they are left.
    Q_INVOKABLE void enterAnalytics();
    Q_INVOKABLE void leaveAnalytics();
    Q_INVOKABLE void reloadAnalytics();
    void toggleExpanded(const QString& projectId);
    void toggleCardExpanded(const QString& zoneId);
    /// Does nothing while a redeploy of the project is running.
    void redeploy(const QString& projectId);
    void setTracked(const QString& projectId, bool tracked);
    void setIndividual(const QString& projectId, bool individual);

Q_SIGNALS:
    /// It has become active: views reset themselves.
    void activated();
    void closeRequested();
    /// Any field of the state may have changed, or the time.
    void refreshed();
    void summaryChanged();
    void filterChanged();
    /// The state of a row that is kept here has changed.
    void rowChanged(const QString& rowId);

private:
    void refresh();
    void refreshLists();
    void foldCards();
    TaskHandle startLoadingAnalytics(AnalyticsReload reload);
    [[nodiscard]] QCoro::Task<> awaitRedeploy(QString projectId);

    AppState& m_state;
    const Clock& m_clock;
    Workspace& m_workspace;
    const QString m_versionText;
    const Actions m_actions;
    bool m_isActive = false;
    bool m_areListsStale = true;
    DeferredCall m_refresh{[this] {
        if (m_isActive)
            refresh();
    }};
    PanelSummary m_summary;
    RowListModel m_trackedProjects;
    RowListModel m_managedProjects;
    RowListModel m_analyticsCards;
    QString m_filter;
    QSet<QString> m_expanded;
    QSet<QString> m_expandedCards;
    QSet<QString> m_redeploying;
    /// The load that began when the analytics were entered.
    TaskHandle m_analyticsLoad;
    /// Last, so that its tasks end first.
    TaskScope m_tasks;
};

}  // namespace tidemark
