#pragma once

#include <QObject>
#include <QString>
#include <QUrl>
#include <optional>

#include "platform/base/Bundle.h"
#include "platform/base/Clock.h"
#include "platform/base/TaskScope.h"
#include "platform/base/UserDefaults.h"
#include "platform/http/HttpClient.h"
#include "platform/session/Workspace.h"
#include "updates/Appcast.h"
#include "updates/UpdateError.h"
#include "updates/UpdateInstaller.h"

namespace tidemark {

/// Looks for new releases in an appcast and installs what is signed with the bundle's key. Its two settings
/// and the date of the last check are kept in an ini file of its own. UI thread only.
///
/// It never offers a release that is not newer than the running one, and a pre-release only to whoever runs
/// one.
class Updater final : public QObject {
    Q_OBJECT

public:
    enum class Stage : quint8 {
        idle,
        checking,  ///< for the user; a scheduled check shows nothing until it has found something
        upToDate,
        available,    ///< `release` is newer
        downloading,  ///< see `bytesReceived`
        verifying,    ///< and installing
        installed,    ///< the AppImage is replaced; the running program is still the old one
        handedOver,   ///< the package is with the system's installer
        failed,       ///< see `error`
    };
    Q_ENUM(Stage)

    struct Services {
        HttpClient& http;
        Clock& clock;
        Workspace& workspace;
        /// Its version, feed and key.
        Bundle bundle;
        /// How the running program is installed.
        InstalledForm installedForm;
        /// The ini file for the settings.
        QString settingsPath;
    };

    explicit Updater(Services services);
    ~Updater() override;

    /// On unless the user switched it off.
    [[nodiscard]] bool automaticallyChecksForUpdates() const;
    void setAutomaticallyChecksForUpdates(bool isOn);
    /// When the list of releases was last read.
    [[nodiscard]] std::optional<Clock::TimePoint> lastUpdateCheckDate() const;
    /// False while a check or an installation is under way.
    [[nodiscard]] bool canCheckForUpdates() const;

    /// Begins the checking of its own schedule: soon, when the last check is a day ago, and then once a day;
    /// an hour after one that failed. Call once.
    void start();
    /// The user's own check: its outcome is presented whatever it is. A version that was skipped is offered
    /// again. While something is under way, that is presented.
    void checkForUpdates();

    [[nodiscard]] Stage stage() const { return m_stage; }
    /// What is available, being installed, or installed.
    [[nodiscard]] const std::optional<AppcastItem>& release() const { return m_release; }
    [[nodiscard]] qint64 bytesReceived() const { return m_bytesReceived; }
    [[nodiscard]] qint64 bytesTotal() const { return m_bytesTotal; }
    /// Of the last failure.
    [[nodiscard]] UpdateError error() const { return m_failure.error; }
    /// What to tell the user of it: English sentences that name no address.
    [[nodiscard]] QString errorDescription() const { return m_failure.description(); }

    /// From `available`.
    void install();
    void skipThisVersion();
    /// Ends a check or download under way, and leaves whatever is presented: back to `idle`. What is being
    /// put in place already ends as installed.
    void dismiss();
    /// From `installed`: quits, and asks the composition root to start the new program after that.
    void restart();

Q_SIGNALS:
    void canCheckForUpdatesChanged();
    /// The stage, or the progress of the download.
    void changed();
    /// The user should see the stage: at the user's own check, and when a scheduled one found something.
    void presentationRequested();
    void restartRequested();

private:
    enum class Asker : quint8 { user, schedule };

    void startSchedule();
    [[nodiscard]] std::chrono::milliseconds timeUntilDue() const;
    QCoro::Task<> runSchedule(std::stop_token stop);

    void startCheck(Asker asker);
    QCoro::Task<> check(std::stop_token stop);
    /// The release to offer: nothing when the running one is the newest, an error when no newer one can be
    /// had.
    [[nodiscard]] tl::expected<std::optional<AppcastItem>, UpdateError> newest(
        QList<AppcastItem> items) const;
    void conclude(const QList<AppcastItem>& items);
    void offer(const AppcastItem& release);

    QCoro::Task<> installRelease(AppcastItem release, std::stop_token stop);
    void showProgress(UpdateInstaller::Step step, qint64 received);

    void enter(Stage stage);
    /// Of the schedule's failures nobody is told.
    void fail(UpdateFailure failure);
    void setBusy(bool isBusy);
    void endOperation();

    Services m_services;
    UserDefaults m_settings;
    UpdateInstaller m_installer;
    Stage m_stage = Stage::idle;
    Asker m_asker = Asker::user;
    bool m_isStarted = false;
    bool m_isBusy = false;
    std::optional<AppcastItem> m_release;
    /// Replaced the running program's file in this run.
    std::optional<AppcastItem> m_installed;
    qint64 m_bytesReceived = 0;
    qint64 m_bytesTotal = 0;
    UpdateFailure m_failure;
    TaskHandle m_schedule;
    /// The check or installation under way. One that was asked to stop touches nothing of this any more.
    TaskHandle m_operation;
    /// Last: its tasks use the members above.
    TaskScope m_tasks;
};

}  // namespace tidemark
