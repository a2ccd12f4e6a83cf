#pragma once

#include <QString>
#include <memory>

#include "app/AppDelegate.h"
#include "notify/NotificationManager.h"
#include "notify/UpdateController.h"
#include "platform/base/Bundle.h"
#include "platform/base/Clock.h"
#include "platform/base/UserDefaults.h"
#include "platform/http/NetworkHttpClient.h"
#include "platform/session/CanberraSoundPlayer.h"
#include "platform/session/DBusNotificationCenter.h"
#include "platform/session/DesktopWorkspace.h"
#include "platform/session/LoginItem.h"
#include "platform/session/SingleInstance.h"
#include "platform/tray/DBusStatusBar.h"
#include "updates/UpdateInstaller.h"

namespace tidemark {

/// The program put together: the platform's services and the delegate that works with them.
class Tidemark {
public:
    struct Options {
        Bundle bundle;
        Endpoints endpoints;
        NetworkHttpClient::InsecureLoopback insecureLoopback;
        QString configPath;
        /// The ini file of what the program remembers of its own.
        QString defaultsPath;
        /// The ini file of the updater.
        QString updateSettingsPath;
        /// How the program is installed, which is how it is updated and started again.
        InstalledForm installedForm;
        /// The user's autostart folder.
        QString autostartFolder;
        std::unique_ptr<Keychain> keychain;
    };

    /// Whether there is a display to connect to, without which the application object cannot be made.
    [[nodiscard]] static bool hasDesktop();

    /// To be called before the application object is made.
    static void prepareApplication();

    /// The options of an installed program.
    [[nodiscard]] static Options userOptions(Bundle bundle);

    /// `instance` is of the same identifier as the bundle and was made before the application object, which
    /// takes the start-up token out of the environment.
    Tidemark(Options options, SingleInstance& instance);

    /// Runs until the user quits or the session ends, and gives the exit code. A second process of the same
    /// bundle hands over to the first and returns at once. After an update that the user wants to run, the
    /// new program has been started when it returns.
    [[nodiscard]] int run();

private:
    [[nodiscard]] int runDelegate();
    [[nodiscard]] std::unique_ptr<Updater> makeUpdater();
    /// The file that starts this program.
    [[nodiscard]] QString programPath() const;

    Options m_options;
    SingleInstance& m_instance;
    SystemClock m_clock;
    NetworkHttpClient m_http;
    UserDefaults m_defaults;
    QThreadPool m_keychainWorker;
    AutostartLoginItem m_loginItem;
    DBusStatusBar m_statusBar;
    DesktopWorkspace m_workspace;
    DBusNotificationCenter m_notificationCenter;
    CanberraSoundPlayer m_sounds;
    NotificationManager m_notifications;
    UpdateController m_updates;
};

}  // namespace tidemark
