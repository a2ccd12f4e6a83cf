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

/// Announces every change of state of a project's newest deployment: a notification and, when sounds are on,
/// a chime or a thud. One instance for the process, UI thread only. What it knows is gone with the process.
class NotificationManager {
public:
    /// All of them outlive the manager; the workspace also outlives what the centre still delivers. Without a
    /// bundle identifier nothing is ever announced.
    NotificationManager(NotificationCenter& center, SoundPlayer& sounds, Workspace& workspace,
                        const Clock& clock, const Bundle& bundle);

    /// Takes the newest deployment of a project. The first sighting of a project is remembered only; the
    /// same state again changes nothing.
    void checkAndNotify(const QString& projectId, const QString& projectName, const Deployment& deployment);

    /// Forgets all states, so that the next deployment of each project is a first sighting: the production
    /// filter has changed, and answers under different filters are not changes of state.
    void forgetStates() { m_previousStates.clear(); }

    /// Tells the user something about the program itself, without a chime. A click on it runs the handler
    /// that was set last. When nothing can show it, `onDropped` is called, from the event loop.
    void announce(const QString& title, const QString& body, std::function<void()> onDropped);
    void setAnnouncementHandler(std::function<void()> onClick) {
        *m_onAnnouncementClick = std::move(onClick);
    }

    [[nodiscard]] bool soundEnabled() const { return m_soundEnabled; }
    /// The sound that the desktop plays for every notification is not affected.
    void setSoundEnabled(bool enabled) { m_soundEnabled = enabled; }

private:
    void requestPermissionIfNeeded();
    void playSound(DeploymentState state);

    NotificationCenter& m_center;
    SoundPlayer& m_sounds;
    const Clock& m_clock;
    bool m_hasBundleIdentifier;
    /// The last state seen of each project, never pruned.
    QHash<QString, DeploymentState> m_previousStates;
    bool m_soundEnabled = true;
    bool m_hasRequestedPermission = false;
    /// The centre may call it later than we live.
    std::shared_ptr<std::function<void()>> m_onAnnouncementClick = std::make_shared<std::function<void()>>();
};

}  // namespace tidemark
