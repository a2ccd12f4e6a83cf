#include "app/items/ProjectStatusItem.h"

#include <utility>

#include "app/items/StatusCircle.h"
#include "platform/base/Characters.h"
#include "presentation/DeploymentTexts.h"
#include "presentation/StatePresentation.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

constexpr int longestCommitLine = 50;
constexpr float dimmed = 0.4F;
const QString absent = u"—"_s;

MenuItem separator(const QString& identifier) {
    return {.identifier = u"separator-"_s + identifier, .isSeparator = true};
}

QString branch(const Deployment& deployment) {
    return deployment.meta ? deployment.meta->githubCommitRef.value_or(absent) : absent;
}

QString commitLine(const Deployment& deployment) {
    if (!deployment.meta || !deployment.meta->githubCommitMessage)
        return absent;
    return elided(deployment.meta->githubCommitMessage->section(u'\n', 0, 0), longestCommitLine);
}

}  // namespace

ProjectStatusItem::ProjectStatusItem(VercelProject project, Services services, Actions actions)
    : m_project(std::move(project)),
      m_services(services),
      m_actions(std::move(actions)),
      m_statusItem(services.statusBar.createStatusItem(u"tidemark-"_s + m_project.id)) {
    showCurrent();
}

void ProjectStatusItem::rename(const QString& name) {
    if (name == m_project.name)
        return;
    m_project.name = name;
    // Its letters belong to the name.
    m_color = QColor();
    showCurrent();
}

void ProjectStatusItem::clearError() {
    if (m_lastError) {
        m_lastError.reset();
        showCurrent();
    }
}

void ProjectStatusItem::update(const Deployment& deployment) {
    m_services.notifications.checkAndNotify(m_project.id, m_project.name, deployment);
    m_latestDeployment = deployment;
    m_lastError.reset();
    showCurrent();
}

void ProjectStatusItem::setError(const QString& message) {
    m_lastError = message;
    showCurrent();
}

void ProjectStatusItem::showCurrent() {
    const DeploymentState state =
        m_latestDeployment ? m_latestDeployment->deploymentState() : DeploymentState::unknown;
    QColor pill = color(state);
    if (m_lastError && m_latestDeployment)
        pill.setAlphaF(dimmed);
    if (m_lastError)
        show(pill, u"last check failed — "_s + *m_lastError);
    else
        show(pill, m_latestDeployment ? rawText(state) : u"loading…"_s);
    buildMenu();
}

void ProjectStatusItem::show(const QColor& color, const QString& toolTip) {
    if (!m_statusItem)
        return;
    if (color != m_color) {
        m_color = color;
        m_statusItem->setImage(StatusCircle::makeImage(color, letters()));
    }
    m_statusItem->setToolTip(m_project.name + u": "_s + toolTip);
}

QString ProjectStatusItem::letters() const {
    return firstCharacters(m_project.name, 2).toUpper();
}

void ProjectStatusItem::buildMenu() {
    if (!m_statusItem)
        return;
    Menu menu{{.identifier = u"title"_s, .title = m_project.name, .isHeading = true}, separator(u"title"_s)};
    if (m_lastError)
        menu += errorEntries();
    if (m_latestDeployment)
        menu += deploymentEntries(*m_latestDeployment);
    else if (!m_lastError)
        menu += {.identifier = u"loading"_s, .title = u"Loading…"_s};
    menu += actionEntries();
    m_statusItem->setMenu(menu);
}

Menu ProjectStatusItem::errorEntries() const {
    Menu entries{{.identifier = u"error"_s, .title = u"⚠️ Last check failed"_s},
                 {.identifier = u"message"_s, .title = *m_lastError}};
    if (m_latestDeployment)
        entries += {.identifier = u"known"_s, .title = u"Showing last known status:"_s};
    entries += separator(u"error"_s);
    return entries;
}

Menu ProjectStatusItem::deploymentEntries(const Deployment& deployment) const {
    const auto deployed = [deployment, &clock = m_services.clock] {
        return u"Deployed: "_s + pushedAtDescription(deployment, clock.now());
    };
    Menu entries{
        {.identifier = u"status"_s, .title = u"Status: "_s + displayLabel(deployment.deploymentState())},
        {.identifier = u"branch"_s, .title = u"Branch: "_s + branch(deployment)},
        {.identifier = u"commit"_s, .title = u"Commit: "_s + commitLine(deployment)},
        {.identifier = u"deployed"_s, .title = deployed(), .currentTitle = deployed},
        separator(u"links"_s)};
    if (const auto address = webAddress(deployment.inspectorUrl.value_or(QString())))
        entries += link(u"inspector"_s, u"Open in Vercel"_s, *address);
    if (const auto address = webAddress(u"https://"_s + deployment.url))
        entries += link(u"deployment"_s, u"Open Deployment"_s, *address);
    return entries;
}

Menu ProjectStatusItem::actionEntries() const {
    Menu entries{separator(u"refresh"_s),
                 {.identifier = u"refresh"_s, .title = u"Refresh Now"_s, .action = m_actions.onRefresh},
                 separator(u"application"_s)};
    if (m_actions.onCheckForUpdates)
        entries += {.identifier = u"updates"_s,
                    .title = u"Check for Updates…"_s,
                    .action = m_actions.onCheckForUpdates};
    entries +=
        {.identifier = u"preferences"_s, .title = u"Preferences…"_s, .action = m_actions.onPreferences};
    entries += {.identifier = u"quit"_s,
                .title = u"Quit Tidemark"_s,
                .keyEquivalent = u'q',
                .action = m_actions.onQuit};
    return entries;
}

MenuItem ProjectStatusItem::link(const QString& identifier, const QString& title, const QUrl& address) const {
    return {.identifier = identifier, .title = title, .action = [address, &workspace = m_services.workspace] {
                workspace.openURL(address);
            }};
}

}  // namespace tidemark
