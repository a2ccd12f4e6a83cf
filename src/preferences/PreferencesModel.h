#pragma once

#include <qqmlintegration.h>

#include <QAbstractItemModel>
#include <QObject>
#include <QString>
#include <functional>
#include <memory>

#include "config/AppConfiguration.h"
#include "preferences/AccountListModel.h"
#include "preferences/UpdatesSection.h"

namespace tidemark {

/// What the editor edits: a private copy of the configuration. Nothing leaves it before save().
class PreferencesModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window's controller")
    Q_PROPERTY(QAbstractItemModel* accounts READ accounts CONSTANT FINAL)
    Q_PROPERTY(QString cloudflareToken READ cloudflareToken WRITE setCloudflareToken NOTIFY
                   cloudflareTokenChanged FINAL)
    Q_PROPERTY(QString notice READ notice CONSTANT FINAL)
    Q_PROPERTY(QString cloudflareTokenNotice READ cloudflareTokenNotice CONSTANT FINAL)
    Q_PROPERTY(bool showCFToken READ showCFToken WRITE setShowCFToken NOTIFY showCFTokenChanged FINAL)
    Q_PROPERTY(double pollingInterval READ pollingSeconds NOTIFY pollingIntervalChanged FINAL)
    Q_PROPERTY(double shortestInterval READ shortestSeconds CONSTANT FINAL)
    Q_PROPERTY(double longestInterval READ longestSeconds CONSTANT FINAL)
    Q_PROPERTY(double intervalStep READ stepSeconds CONSTANT FINAL)
    Q_PROPERTY(QString pollingIntervalText READ pollingIntervalText NOTIFY pollingIntervalChanged FINAL)
    Q_PROPERTY(bool canLengthen READ canLengthen NOTIFY pollingIntervalChanged FINAL)
    Q_PROPERTY(bool canShorten READ canShorten NOTIFY pollingIntervalChanged FINAL)
    Q_PROPERTY(bool launchAtLogin READ launchAtLogin WRITE setLaunchAtLogin NOTIFY launchAtLoginChanged FINAL)
    Q_PROPERTY(bool soundEnabled READ soundEnabled WRITE setSoundEnabled NOTIFY soundEnabledChanged FINAL)
    Q_PROPERTY(bool canSave READ canSave NOTIFY canSaveChanged FINAL)
    Q_PROPERTY(tidemark::UpdatesSection* updates READ updates CONSTANT FINAL)

public:
    /// The shortest and the longest interval that can be chosen, and the step between two, in seconds. A file
    /// edited by hand may hold any other, which stays until it is changed here.
    static constexpr qint64 shortestInterval = 10;
    static constexpr qint64 longestInterval = 300;
    static constexpr qint64 intervalStep = 10;

    struct Actions {
        std::function<void(const AppConfiguration&)> onSave;
        std::function<void()> onCancel;
        /// Each opens the page of its service where tokens are made.
        std::function<void()> onOpenVercelTokens;
        std::function<void()> onOpenCloudflareTokens;
    };

    PreferencesModel(const AppConfiguration& configuration, QString notice,
                     std::unique_ptr<UpdatesSection> updates, Actions actions);

    [[nodiscard]] QAbstractItemModel* accounts() { return &m_accountDrafts; }
    /// Why the service refuses accounts' tokens, by account id.
    void setAccountErrors(const QHash<QString, QString>& errors) { m_accountDrafts.setErrors(errors); }
    [[nodiscard]] QList<AccountDraft> accountDrafts() const { return m_accountDrafts.drafts(); }
    /// What the user is to know before anything else; may be empty.
    [[nodiscard]] QString notice() const { return m_notice; }
    /// That the stored token could not be read; empty otherwise.
    [[nodiscard]] QString cloudflareTokenNotice() const { return m_cloudflareTokenNotice; }
    [[nodiscard]] QString cloudflareToken() const { return m_cloudflareToken; }
    void setCloudflareToken(const QString& token);
    [[nodiscard]] bool showCFToken() const { return m_showCFToken; }
    void setShowCFToken(bool show);
    [[nodiscard]] qint64 pollingInterval() const { return m_pollingInterval; }
    /// The same as the views count.
    [[nodiscard]] double pollingSeconds() const { return static_cast<double>(m_pollingInterval); }
    [[nodiscard]] static double shortestSeconds() { return shortestInterval; }
    [[nodiscard]] static double longestSeconds() { return longestInterval; }
    [[nodiscard]] static double stepSeconds() { return intervalStep; }
    [[nodiscard]] QString pollingIntervalText() const;
    [[nodiscard]] bool canLengthen() const { return m_pollingInterval < longestInterval; }
    [[nodiscard]] bool canShorten() const { return m_pollingInterval > shortestInterval; }
    [[nodiscard]] bool launchAtLogin() const { return m_launchAtLogin; }
    void setLaunchAtLogin(bool launch);
    [[nodiscard]] bool soundEnabled() const { return m_soundEnabled; }
    void setSoundEnabled(bool enabled);
    /// Whether any draft has a token, typed or stored.
    [[nodiscard]] bool canSave() const;
    [[nodiscard]] UpdatesSection* updates() const { return m_updates.get(); }
    /// Whether anything was changed since the copy was made.
    [[nodiscard]] bool isEdited() const { return m_isEdited; }

    /// The place of the first draft without a token; -1 when all have one.
    Q_INVOKABLE [[nodiscard]] int firstWithoutToken() const;
    Q_INVOKABLE void addAccount();
    Q_INVOKABLE void removeAccount(const QString& id);
    /// So many steps, up to the longest interval or, where they are negative, down to the shortest.
    Q_INVOKABLE void stepInterval(int steps);
    Q_INVOKABLE void openVercelTokens();
    Q_INVOKABLE void openCloudflareTokens();
    /// Hands over the configuration as edited: without the accounts that have no token. Does nothing unless
    /// `canSave`.
    Q_INVOKABLE void save();
    Q_INVOKABLE void cancel();

Q_SIGNALS:
    void cloudflareTokenChanged();
    void showCFTokenChanged();
    void pollingIntervalChanged();
    void launchAtLoginChanged();
    void soundEnabledChanged();
    void canSaveChanged();

private:
    void setPollingInterval(qint64 seconds);

    QString m_notice;
    AccountListModel m_accountDrafts;
    QString m_cloudflareToken;
    bool m_isCloudflareTokenUnread;
    QString m_cloudflareTokenNotice;
    qint64 m_pollingInterval;
    bool m_launchAtLogin;
    bool m_soundEnabled;
    bool m_showCFToken = false;
    bool m_isEdited = false;
    std::unique_ptr<UpdatesSection> m_updates;
    Actions m_actions;
};

}  // namespace tidemark
