#include "preferences/PreferencesModel.h"

#include <algorithm>
#include <utility>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

QList<AccountDraft> draftsOf(const QList<VercelAccount>& accounts) {
    QList<AccountDraft> drafts;
    std::ranges::transform(accounts, std::back_inserter(drafts), &AccountDraft::of);
    return drafts;
}

}  // namespace

PreferencesModel::PreferencesModel(const AppConfiguration& configuration, QString notice,
                                   std::unique_ptr<UpdatesSection> updates, Actions actions)
    : m_notice(std::move(notice)),
      m_accountDrafts(draftsOf(configuration.accounts)),
      m_cloudflareToken(configuration.cloudflareToken),
      m_isCloudflareTokenUnread(configuration.isCloudflareTokenUnread),
      m_pollingInterval(configuration.pollingIntervalSeconds),
      m_launchAtLogin(configuration.launchAtLogin),
      m_soundEnabled(configuration.soundEnabled),
      m_updates(std::move(updates)),
      m_actions(std::move(actions)) {
    // Where nothing was ever configured, there is probably none.
    if (m_isCloudflareTokenUnread && canSave())
        m_cloudflareTokenNotice = unreadTokenNotice();
    connect(&m_accountDrafts, &AccountListModel::edited, this, [this] {
        m_isEdited = true;
        Q_EMIT canSaveChanged();
    });
}

void PreferencesModel::setCloudflareToken(const QString& token) {
    m_cloudflareToken = joinedLines(token, {});
    m_isEdited = true;
    // Also when it is what it was: the field may show what was pasted.
    Q_EMIT cloudflareTokenChanged();
}

void PreferencesModel::setShowCFToken(bool show) {
    if (show == m_showCFToken)
        return;
    m_showCFToken = show;
    Q_EMIT showCFTokenChanged();
}

QString PreferencesModel::pollingIntervalText() const {
    return u"%1 seconds"_s.arg(m_pollingInterval);
}

void PreferencesModel::setPollingInterval(qint64 seconds) {
    m_pollingInterval = std::clamp(seconds, shortestInterval, longestInterval);
    m_isEdited = true;
    Q_EMIT pollingIntervalChanged();
}

void PreferencesModel::stepInterval(int steps) {
    if (steps > 0 ? !canLengthen() : !canShorten())
        return;
    // A file may hold anything, also what cannot be counted on from.
    const qint64 start = std::clamp(m_pollingInterval, qint64{0}, longestInterval + intervalStep);
    setPollingInterval(start + (steps * intervalStep));
}

void PreferencesModel::setLaunchAtLogin(bool launch) {
    if (launch == m_launchAtLogin)
        return;
    m_launchAtLogin = launch;
    m_isEdited = true;
    Q_EMIT launchAtLoginChanged();
}

void PreferencesModel::setSoundEnabled(bool enabled) {
    if (enabled == m_soundEnabled)
        return;
    m_soundEnabled = enabled;
    m_isEdited = true;
    Q_EMIT soundEnabledChanged();
}

bool PreferencesModel::canSave() const {
    return std::ranges::any_of(m_accountDrafts.drafts(), &AccountDraft::hasToken);
}

int PreferencesModel::firstWithoutToken() const {
    const QList<AccountDraft> drafts = m_accountDrafts.drafts();
    const auto first = std::ranges::find(drafts, QString(), &AccountDraft::apiToken);
    return first == drafts.cend() ? -1 : static_cast<int>(first - drafts.cbegin());
}

void PreferencesModel::addAccount() {
    m_accountDrafts.append(AccountDraft::makeNew());
}

void PreferencesModel::removeAccount(const QString& id) {
    m_accountDrafts.remove(id);
}

void PreferencesModel::openVercelTokens() {
    m_actions.onOpenVercelTokens();
}

void PreferencesModel::openCloudflareTokens() {
    m_actions.onOpenCloudflareTokens();
}

void PreferencesModel::save() {
    const QString cloudflareToken = trimmedSpaces(m_cloudflareToken);
    AppConfiguration configuration{
        .cloudflareToken = cloudflareToken,
        .isCloudflareTokenUnread = m_isCloudflareTokenUnread && cloudflareToken.isEmpty(),
        .pollingIntervalSeconds = m_pollingInterval,
        .launchAtLogin = m_launchAtLogin,
        .soundEnabled = m_soundEnabled};
    for (const AccountDraft& draft : m_accountDrafts.drafts())
        if (draft.hasToken())
            configuration.accounts.append(draft.asVercelAccount());
    if (!configuration.accounts.isEmpty())
        m_actions.onSave(configuration);
}

void PreferencesModel::cancel() {
    m_actions.onCancel();
}

}  // namespace tidemark
