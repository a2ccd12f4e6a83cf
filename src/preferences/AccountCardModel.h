#pragma once

#include <QLatin1StringView>
#include <qqmlintegration.h>

#include <QObject>
#include <QString>

#include "preferences/AccountDraft.h"

namespace tidemark {

/// What a card edits: one draft.
///
/// Its texts are single lines: of what is pasted, line breaks at the ends go. Those within go from tokens and
/// ids, and become spaces in a name.
class AccountCardModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the editor")
    Q_PROPERTY(QString id READ id CONSTANT FINAL)
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged FINAL)
    Q_PROPERTY(QString teamId READ teamId WRITE setTeamId NOTIFY teamIdChanged FINAL)
    Q_PROPERTY(QString apiToken READ apiToken WRITE setApiToken NOTIFY apiTokenChanged FINAL)
    Q_PROPERTY(QString tokenNotice READ tokenNotice NOTIFY tokenNoticeChanged FINAL)
    Q_PROPERTY(bool showToken READ showToken WRITE setShowToken NOTIFY showTokenChanged FINAL)

public:
    explicit AccountCardModel(AccountDraft draft, QObject* parent = nullptr);

    [[nodiscard]] const AccountDraft& draft() const { return m_draft; }
    [[nodiscard]] QString id() const { return m_draft.id; }
    [[nodiscard]] QString name() const { return m_draft.name; }
    void setName(const QString& name);
    [[nodiscard]] QString teamId() const { return m_draft.teamId; }
    void setTeamId(const QString& teamId);
    [[nodiscard]] QString apiToken() const { return m_draft.apiToken; }
    void setApiToken(const QString& token);
    /// What is wrong with the stored token: that it could not be read, or that the service refuses it. Empty
    /// otherwise.
    [[nodiscard]] QString tokenNotice() const;
    /// Why the service refuses the stored token; empty while it is accepted.
    void setError(const QString& error);
    [[nodiscard]] bool showToken() const { return m_draft.showToken; }
    void setShowToken(bool show);

Q_SIGNALS:
    void nameChanged();
    void teamIdChanged();
    void apiTokenChanged();
    void tokenNoticeChanged();
    void showTokenChanged();

private:
    AccountDraft m_draft;
    QString m_error;
};

/// What is said below the field of a token that could not be read.
[[nodiscard]] QString unreadTokenNotice();

/// The lines of the text one after the other, `separator` between them.
[[nodiscard]] QString joinedLines(const QString& text, QLatin1StringView separator);

}  // namespace tidemark
