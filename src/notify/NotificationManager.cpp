#include "notify/NotificationManager.h"

#include <array>
#include <charconv>
#include <utility>

#include "presentation/StatePresentation.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

const QString inspectorUrlKey = u"inspectorUrl"_s;
const QString projectIdKey = u"projectId"_s;
const QString announcementKey = u"announcement"_s;
/// What the key above holds for what opens the preferences.
const QString preferencesValue = u"preferences"_s;

const QString openAction = u"open"_s;
const QString redeployAction = u"redeploy"_s;

/// Seconds since 1970 as the shortest decimal that reads back as the same number, always with a decimal
/// point.
QString secondsText(Clock::TimePoint time) {
    const double seconds = std::chrono::duration<double>(time.time_since_epoch()).count();
    // In this notation a double has fewer than 400 characters.
    std::array<char, 512> buffer{};
    const auto [end, error] =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), seconds, std::chars_format::fixed);
    Q_ASSERT(error == std::errc());
    const QString text = QString::fromLatin1(buffer.data(), end - buffer.data());
    return text.contains(u'.') ? text : text + u".0"_s;
}

/// What the notification of a project's deployment leads to.
void addActions(NotificationRequest& request, const QString& projectId, const Deployment& deployment) {
    if (deployment.inspectorUrl)
        request.userInfo.insert(inspectorUrlKey, *deployment.inspectorUrl);
    if (webAddress(deployment.inspectorUrl.value_or(QString())))
        request.actions = {NotificationAction::click(), {openAction, u"Open"_s}};
    if (deployment.deploymentState() == DeploymentState::error) {
        request.userInfo.insert(projectIdKey, projectId);
        request.actions += {redeployAction, u"Redeploy"_s};
    }
}

void respond(const NotificationCenter::UserInfo& info, const QString& action, Workspace& workspace,
             const NotificationManager::Handlers& handlers) {
    using Opens = NotificationManager::Opens;
    if (action == redeployAction) {
        if (handlers.redeploy)
            handlers.redeploy(info.value(projectIdKey));
    } else if (info.contains(announcementKey)) {
        if (handlers.open)
            handlers.open(info.value(announcementKey) == preferencesValue ? Opens::preferences
                                                                          : Opens::popover);
    } else if (const auto url = webAddress(info.value(inspectorUrlKey))) {
        workspace.openURL(*url);
    }
}

}  // namespace

NotificationManager::NotificationManager(NotificationCenter& center, SoundPlayer& sounds,
                                         Workspace& workspace, const Clock& clock, const Bundle& bundle)
    : m_center(center),
      m_sounds(sounds),
      m_clock(clock),
      m_hasBundleIdentifier(!bundle.identifier.isEmpty()) {
    if (!m_hasBundleIdentifier)
        return;
    m_center.setResponseHandler(
        [&workspace, handlers = m_handlers](const NotificationCenter::UserInfo& info, const QString& action) {
            respond(info, action, workspace, *handlers);
        });
}

void NotificationManager::checkAndNotify(const QString& projectId, const QString& projectName,
                                         const Deployment& deployment) {
    const DeploymentState state = deployment.deploymentState();
    const auto known = m_previousStates.constFind(projectId);
    const bool isFirstSighting = known == m_previousStates.cend();
    const DeploymentState oldState = isFirstSighting ? state : *known;
    m_previousStates.insert(projectId, state);
    if (!m_hasBundleIdentifier || oldState == state)
        return;
    requestPermissionIfNeeded();
    NotificationRequest request{.identifier = projectId + u'-' + secondsText(m_clock.now()),
                                .title = projectName,
                                .body = displayLabel(oldState) + u"  →  "_s + displayLabel(state),
                                .userInfo = {}};
    addActions(request, projectId, deployment);
    m_center.add(request);
    if (m_soundEnabled)
        playSound(state);
}

void NotificationManager::announce(const QString& title, const QString& body, Opens opens,
                                   std::function<void()> onDropped) {
    if (!m_hasBundleIdentifier)
        return;
    requestPermissionIfNeeded();
    const QString button = opens == Opens::preferences ? u"Preferences…"_s : u"Show"_s;
    m_center.add({.identifier = announcementKey + u'-' + secondsText(m_clock.now()),
                  .title = title,
                  .body = body,
                  .userInfo = {{announcementKey, opens == Opens::preferences ? preferencesValue : QString()}},
                  .actions = {NotificationAction::click(), {openAction, button}}},
                 std::move(onDropped));
}

void NotificationManager::requestPermissionIfNeeded() {
    if (!std::exchange(m_hasRequestedPermission, true))
        m_center.requestAuthorization();
}

void NotificationManager::playSound(DeploymentState state) {
    switch (state) {
        case DeploymentState::ready:
            m_sounds.play(u"Glass"_s);
            return;
        case DeploymentState::error:
        case DeploymentState::canceled:
            m_sounds.play(u"Basso"_s);
            return;
        case DeploymentState::building:
        case DeploymentState::initializing:
        case DeploymentState::queued:
        case DeploymentState::unknown:
            return;
    }
}

}  // namespace tidemark
