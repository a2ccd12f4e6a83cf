#pragma once

#include <QHash>
#include <QSet>
#include <QString>

#include "config/AppConfiguration.h"
#include "notify/NotificationManager.h"
#include "state/AppState.h"
#include "vercel/VercelError.h"

namespace tidemark {

/// Watches whether the service accepts the accounts' tokens. An account is refused when its project list, or
/// each of its tracked projects, is answered with 401 or 403. The state then holds the reason until the
/// service accepts the account or its token is changed, and one notification tells it. UI thread only.
class AccountWatch {
public:
    /// Both outlive the watch.
    AccountWatch(AppState& state, NotificationManager& notifications);

    /// The list of the account's projects was answered.
    template <typename T>
    void listFetched(const VercelAccount& account, const VercelResult<T>& result) {
        result ? listAccepted(account.id) : listFailed(account.id, result.error());
    }
    /// The deployments of a project were answered.
    template <typename T>
    void projectPolled(const QString& projectId, const VercelResult<T>& result) {
        result ? pollAccepted(projectId) : pollFailed(projectId, result.error());
    }
    /// Forgets what is known of accounts that have another token or team by now.
    void configurationChanged();

private:
    /// What the service has said of one account.
    struct Account {
        QString teamId;
        QString apiToken;
        bool isListRefused = false;
        /// Since the last poll of any of its projects that was accepted.
        QSet<QString> refusedProjects{};
        bool arePollsRefused = false;
        /// Of the last refusal.
        QString reason{};

        [[nodiscard]] bool isRefused() const { return isListRefused || arePollsRefused; }
    };

    void listAccepted(const QString& accountId);
    void listFailed(const QString& accountId, const VercelError& error);
    void pollAccepted(const QString& projectId);
    void pollFailed(const QString& projectId, const VercelError& error);
    /// The configured account with this id; null if it is not configured.
    [[nodiscard]] Account* account(const QString& accountId);
    [[nodiscard]] Account* accountOfProject(const QString& projectId);
    [[nodiscard]] bool areAllRefused(const QString& accountId, const QSet<QString>& projectIds) const;
    /// Brings the state in line, and announces each account that was not refused before.
    void tell();

    AppState& m_state;
    NotificationManager& m_notifications;
    QHash<QString, Account> m_accounts;
};

}  // namespace tidemark
