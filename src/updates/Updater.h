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

/// Looks for new releases in an appcast and installs those that are signed with the bundle's key. Keeps its
/// two settings and the date of the last check in an ini file of its own. UI thread only.
///
/// It offers only releases newer than the running one, and pre-releases only if the running one is a
/// pre-release.
class Updater final : public QObject {
    Q_OBJECT

public:
    enum class Stage : quint8 {
        idle,
        checking,  ///< for the user; a scheduled check changes the stage only when it finds a release
        upToDate,
        available,    ///< `release` is newer
        downloading,  ///< see `bytesReceived`
        verifying,    ///< and installing
        installed,    ///< the AppImage has been replaced; the old program is still running
        handedOver,   ///< the package has been opened with the system's installer
        failed,       ///< see `error`
    };
    Q_ENUM(Stage)

    struct Services {
        HttpClient& http;
        Clock& clock;
        Workspace& workspace;
        /// For its version, feed and key.
        Bundle bundle;
        /// How the running program was installed.
        InstalledForm installedForm;
        /// The ini file for the settings.
        QString settingsPath;
    };

    explicit Updater(Services services);
    ~Updater() override;

    /// True unless the user has turned it off.
    [[nodiscard]] bool automaticallyChecksForUpdates() const;
    void setAutomaticallyChecksForUpdates(bool isOn);
    /// When the feed was last read.
    [[nodiscard]] std::optional<Clock::TimePoint> lastUpdateCheckDate() const;
    /// False during a check or an installation.
    [[nodiscard]] bool canCheckForUpdates() const;

    /// Starts scheduled checks: the first one soon if the last check is a day old, then one a day, and one an
    /// hour after a check that failed. Call once.
    void start();
    /// Checks for the user, so that any outcome is presented, and a skipped version is offered again. During
    /// a check or an installation, presents that.
    void checkForUpdates();

    [[nodiscard]] Stage stage() const { return m_stage; }
    /// The release that is available, being installed, or installed.
    [[nodiscard]] const std::optional<AppcastItem>& release() const { return m_release; }
    [[nodiscard]] qint64 bytesReceived() const { return m_bytesReceived; }
    [[nodiscard]] qint64 bytesTotal() const { return m_bytesTotal; }
    /// The error of the last failure.
    [[nodiscard]] UpdateError error() const { return m_failure.error; }
    /// The last failure in English sentences for the user. They contain no address.
    [[nodiscard]] QString errorDescription() const { return m_failure.description(); }

    /// Installs the release. Only in stage `available`, as is skipping.
    void install();
    void skipThisVersion();
    /// Cancels a check or download and returns to `idle` from any stage. An installation that has begun to
    /// replace the file is still completed.
    void dismiss();
    /// Requests that the program quits and that the new one is started then. Only in stage `installed`.
    void restart();

Q_SIGNALS:
    void canCheckForUpdatesChanged();
    /// The stage or the progress of the download has changed.
    void changed();
    /// The stage should be shown to the user: after a check by the user, and when a scheduled check has found
    /// a release.
    void presentationRequested();
    void restartRequested();

private:
    enum class Asker : quint8 { user, schedule };

    void startSchedule();
    [[nodiscard]] std::chrono::milliseconds timeUntilDue() const;
    QCoro::Task<> runSchedule(std::stop_token stop);

    void startCheck(Asker asker);
    QCoro::Task<> check(std::stop_token stop);
    /// The release to offer; nothing when the running one is the newest, an error when no newer one can be
    /// installed.
    [[nodiscard]] tl::expected<std::optional<AppcastItem>, UpdateError> newest(
        QList<AppcastItem> items) const;
    void conclude(const QList<AppcastItem>& items);
    void offer(const AppcastItem& release);

    QCoro::Task<> installRelease(AppcastItem release, std::stop_token stop);
    void showProgress(UpdateInstaller::Step step, qint64 received);

    void enter(Stage stage);
    /// Presents the failure, unless the check was a scheduled one.
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
    /// The release that replaced the running program's file since it started.
    std::optional<AppcastItem> m_installed;
    qint64 m_bytesReceived = 0;
    qint64 m_bytesTotal = 0;
    UpdateFailure m_failure;
    TaskHandle m_schedule;
    /// The current check or installation. After a request to stop, it does not change this object any more.
    TaskHandle m_operation;
    /// Last: its tasks use the members above.
    TaskScope m_tasks;
};

}  // namespace tidemark
