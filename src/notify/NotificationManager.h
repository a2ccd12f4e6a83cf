#pragma once

#include <QHash>
#include <QString>
#include <functional>
#include <memory>
#include <utility>

#include "platform/base/Bundle.h"
#include "platform/base/Clock.h"
#include "platform/session/NotificationCenter.h"
#include "platform/session/SoundPlayer.h"
#include "platform/session/Workspace.h"
#include "vercel/Deployment.h"

namespace tidemark {

/// Announces each change of state of a project's newest deployment with a notification and, when sounds are
/// on, a chime or a thud. A notification with a page opens it; a failed deployment can be deployed again. One
/// instance per process, UI thread only. The known states are not stored.
class NotificationManager {
public:
    /// What a click on a notification about the program itself opens.
    enum class Opens : quint8 { popover, preferences };

    /// What a notification can lead to, beside web pages. Each may be empty.
    struct Handlers {
        std::function<void(Opens)> open;
        std::function<void(const QString& projectId)> redeploy;
    };

    /// The services must outlive the manager, and the workspace also the clicks that `center` delivers later.
    /// Without a bundle identifier, nothing is announced.
    NotificationManager(NotificationCenter& center, SoundPlayer& sounds, Workspace& workspace,
                        const Clock& clock, const Bundle& bundle);

    /// Takes the newest deployment of a project and announces it if its state differs from that of the last
    /// call. The first call for a project only remembers the state.
    void checkAndNotify(const QString& projectId, const QString& projectName, const Deployment& deployment);

    /// Forgets all states, so that the next deployment of each project is only remembered. Call when the
    /// production filter changes, because deployments under different filters are no changes of state.
    void forgetStates() { m_previousStates.clear(); }

    /// Shows a notification about the program itself, without a sound. `onDropped` is called, from the event
    /// loop, when no service shows it.
    void announce(const QString& title, const QString& body, Opens opens,
                  std::function<void()> onDropped = {});
    void setHandlers(Handlers handlers) { *m_handlers = std::move(handlers); }

    [[nodiscard]] bool soundEnabled() const { return m_soundEnabled; }
    /// Does not affect the sound that the desktop plays for every notification.
    void setSoundEnabled(bool enabled) { m_soundEnabled = enabled; }

private:
    void requestPermissionIfNeeded();
    void playSound(DeploymentState state);

    NotificationCenter& m_center;
    SoundPlayer& m_sounds;
    const Clock& m_clock;
    bool m_hasBundleIdentifier;
    /// The last known state of each project. Never pruned.
    QHash<QString, DeploymentState> m_previousStates;
    bool m_soundEnabled = true;
    bool m_hasRequestedPermission = false;
    /// Shared with the response handler, because the notification centre may outlive the manager.
    std::shared_ptr<Handlers> m_handlers = std::make_shared<Handlers>();
};

}  // namespace tidemark
