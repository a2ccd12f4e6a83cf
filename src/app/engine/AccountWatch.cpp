#include "app/engine/AccountWatch.h"

#include <algorithm>

namespace tidemark {

using namespace Qt::StringLiterals;

AccountWatch::AccountWatch(AppState& state, NotificationManager& notifications)
    : m_state(state), m_notifications(notifications) {}

void AccountWatch::configurationChanged() {
    QHash<QString, Account> accounts;
    if (const auto& config = m_state.config()) {
        for (const auto& configured : config->accounts) {
            const Account known = m_accounts.value(configured.id);
            const bool isSame = known.apiToken == configured.apiToken && known.teamId == configured.teamId;
            accounts.insert(configured.id, isSame ? known : Account{configured.teamId, configured.apiToken});
        }
    }
    m_accounts = accounts;
    tell();
}

AccountWatch::Account* AccountWatch::account(const QString& accountId) {
    const auto found = m_accounts.find(accountId);
    return found == m_accounts.end() ? nullptr : &*found;
}

AccountWatch::Account* AccountWatch::accountOfProject(const QString& projectId) {
    const auto project = m_state.project(projectId);
    return project ? account(project->accountId) : nullptr;
}

void AccountWatch::listAccepted(const QString& accountId) {
    Account* const known = account(accountId);
    if (!known || !known->isListRefused)
        return;
    known->isListRefused = false;
    tell();
}

void AccountWatch::listFailed(const QString& accountId, const VercelError& error) {
    Account* const known = account(accountId);
    if (!known || !isRefused(error))
        return;
    known->isListRefused = true;
    known->reason = description(error);
    tell();
}

void AccountWatch::pollAccepted(const QString& projectId) {
    Account* const known = accountOfProject(projectId);
    if (!known)
        return;
    known->refusedProjects.clear();
    if (!known->arePollsRefused)
        return;
    known->arePollsRefused = false;
    tell();
}

void AccountWatch::pollFailed(const QString& projectId, const VercelError& error) {
    Account* const known = accountOfProject(projectId);
    if (!known || !isRefused(error))
        return;
    known->refusedProjects.insert(projectId);
    if (!areAllRefused(m_state.project(projectId)->accountId, known->refusedProjects))
        return;
    known->arePollsRefused = true;
    known->reason = description(error);
    tell();
}

bool AccountWatch::areAllRefused(const QString& accountId, const QSet<QString>& projectIds) const {
    return std::ranges::all_of(m_state.allProjects(), [&](const VercelProject& project) {
        return project.accountId != accountId || !m_state.trackedIds().contains(project.id) ||
               projectIds.contains(project.id);
    });
}

void AccountWatch::tell() {
    QHash<QString, QString> errors;
    for (auto known = m_accounts.cbegin(); known != m_accounts.cend(); ++known)
        if (known->isRefused())
            errors.insert(known.key(), known->reason);
    const QHash<QString, QString> told = m_state.accountErrors();
    m_state.setAccountErrors(errors);
    if (!m_state.config())
        return;
    for (const auto& configured : m_state.config()->accounts)
        if (errors.contains(configured.id) && !told.contains(configured.id))
            m_notifications.announce(
                u"The token of %1 was refused"_s.arg(configured.name),
                u"%1. Enter another one in the preferences."_s.arg(errors.value(configured.id)),
                NotificationManager::Opens::preferences);
}

}  // namespace tidemark
