#include "preferences/AccountCardModel.h"

#include <QRegularExpression>
#include <QStringList>
#include <utility>

namespace tidemark {

using namespace Qt::StringLiterals;

QString joinedLines(const QString& text, QLatin1StringView separator) {
    static const QRegularExpression lineBreaks(u"[\\n\\r\\x{2028}\\x{2029}]+"_s);
    return text.contains(lineBreaks) ? text.split(lineBreaks, Qt::SkipEmptyParts).join(separator) : text;
}

QString unreadTokenNotice() {
    return u"The stored token could not be read. Left empty, it stays."_s;
}

AccountCardModel::AccountCardModel(AccountDraft draft, QObject* parent)
    : QObject(parent), m_draft(std::move(draft)) {}

// What is taken over otherwise than it was typed is told as a change even if it is what was there before: the
// field still shows what was typed.

void AccountCardModel::setName(const QString& name) {
    m_draft.name = joinedLines(name, " "_L1);
    Q_EMIT nameChanged();
}

void AccountCardModel::setTeamId(const QString& teamId) {
    m_draft.teamId = joinedLines(teamId, {});
    Q_EMIT teamIdChanged();
}

void AccountCardModel::setApiToken(const QString& token) {
    m_draft.apiToken = joinedLines(token, {});
    Q_EMIT apiTokenChanged();
}

QString AccountCardModel::tokenNotice() const {
    if (m_draft.isTokenUnread)
        return unreadTokenNotice();
    return m_error.isEmpty() ? QString() : u"Refused by Vercel: "_s + m_error;
}

void AccountCardModel::setError(const QString& error) {
    if (error == m_error)
        return;
    m_error = error;
    Q_EMIT tokenNoticeChanged();
}

void AccountCardModel::setShowToken(bool show) {
    if (show == m_draft.showToken)
        return;
    m_draft.showToken = show;
    Q_EMIT showTokenChanged();
}

}  // namespace tidemark
