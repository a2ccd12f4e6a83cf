#pragma once

#include <QColor>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

#include "notify/NotificationManager.h"
#include "platform/base/Clock.h"
#include "platform/session/Workspace.h"
#include "platform/tray/StatusItem.h"
#include "vercel/Deployment.h"
#include "vercel/VercelProject.h"

namespace tidemark {

/// The panel entry of one pinned project: a pill in the colour of its newest deployment's state, with a tool
/// tip and a menu. It is loading until it is given a deployment or an error; from then on it shows the last
/// deployment it was given, and the error if that came later. UI thread only.
class ProjectStatusItem {
public:
    /// All of it outlives the item.
    struct Services {
        StatusBar& statusBar;
        NotificationManager& notifications;
        Workspace& workspace;
        const Clock& clock;
    };
    /// The actions of its menu. Without `onCheckForUpdates` there is no entry "Check for Updates…".
    struct Actions {
        std::function<void()> onRefresh;
        std::function<void()> onPreferences;
        std::function<void()> onCheckForUpdates;
        std::function<void()> onQuit;
    };

    ProjectStatusItem(VercelProject project, Services services, Actions actions);

    void rename(const QString& name);
    /// Shows the deployment and forgets the error.
    void update(const Deployment& deployment);
    /// Shows that the last check failed, and why, beside the last known deployment.
    void setError(const QString& message);
    /// Forgets the error of a project without deployments: it is loading again.
    void clearError();
    [[nodiscard]] const std::optional<Deployment>& latestDeployment() const { return m_latestDeployment; }
    [[nodiscard]] const std::optional<QString>& lastError() const { return m_lastError; }

private:
    /// Shows what it was last given.
    void showCurrent();
    void show(const QColor& color, const QString& toolTip);
    void buildMenu();
    [[nodiscard]] Menu errorEntries() const;
    [[nodiscard]] Menu deploymentEntries(const Deployment& deployment) const;
    [[nodiscard]] Menu actionEntries() const;
    [[nodiscard]] MenuItem link(const QString& identifier, const QString& title, const QUrl& address) const;
    [[nodiscard]] QString letters() const;

    VercelProject m_project;
    Services m_services;
    Actions m_actions;
    std::optional<Deployment> m_latestDeployment;
    std::optional<QString> m_lastError;
    QColor m_color;
    std::unique_ptr<StatusItem> m_statusItem;
};

}  // namespace tidemark
