#include "app/Tidemark.h"

#include <QGuiApplication>
#include <QProcess>
#include <QSessionManager>
#include <QStandardPaths>
#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "app/items/TrayAdvisor.h"
#include "platform/base/ActivationToken.h"
#include "platform/base/CoreDumps.h"
#include "platform/base/QuitLimit.h"
#include "platform/base/TerminationSignals.h"
#include "platform/keyring/SecretServiceKeychain.h"
#include "popover/PopoverView.h"
#include "updates/AppImage.h"

namespace tidemark {

using namespace Qt::StringLiterals;

void Tidemark::prepareApplication() {
    PopoverView::prepareApplication();
}

bool Tidemark::hasDesktop() {
    return std::ranges::any_of(std::array{"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"},
                               [](const char* name) { return !qEnvironmentVariableIsEmpty(name); });
}

Tidemark::Options Tidemark::userOptions(Bundle bundle) {
    const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    const QString appImage = runningAppImage(QCoreApplication::applicationFilePath());
    forgetAppImage();
    return {.bundle = std::move(bundle),
            .endpoints = Endpoints::production(),
            .insecureLoopback = NetworkHttpClient::InsecureLoopback::refused,
            .configPath = ConfigStore::configURL(),
            .defaultsPath = config + u"/Tidemark/defaults.ini"_s,
            .updateSettingsPath = config + u"/Tidemark/updates.ini"_s,
            .installedForm = {.appImagePath = appImage, .cacheFolder = cache + u"/Tidemark/updates"_s},
            .autostartFolder = config + u"/autostart"_s,
            .keychain = std::make_unique<SecretServiceKeychain>()};
}

Tidemark::Tidemark(Options options, SingleInstance& instance)
    : m_options(std::move(options)),
      m_instance(instance),
      m_http({.userAgent = "Tidemark/" + m_options.bundle.version.toUtf8(),
              .insecureLoopback = m_options.insecureLoopback}),
      m_defaults(m_options.defaultsPath),
      m_loginItem(m_options.autostartFolder, m_options.bundle.identifier, u"Tidemark"_s, programPath()),
      m_statusBar(u"Tidemark"_s),
      m_notificationCenter(u"Tidemark"_s, m_options.bundle.identifier, QDBusConnection::sessionBus()),
      m_notifications(m_notificationCenter, m_sounds, m_workspace, m_clock, m_options.bundle),
      m_updates(m_options.bundle, [this] { return makeUpdater(); }) {
    m_keychainWorker.setMaxThreadCount(1);
}

std::unique_ptr<Updater> Tidemark::makeUpdater() {
    return std::make_unique<Updater>(Updater::Services{.http = m_http,
                                                       .clock = m_clock,
                                                       .workspace = m_workspace,
                                                       .bundle = m_options.bundle,
                                                       .installedForm = m_options.installedForm,
                                                       .settingsPath = m_options.updateSettingsPath});
}

QString Tidemark::programPath() const {
    const InstalledForm& form = m_options.installedForm;
    return form.isAppImage() ? form.appImagePath : QCoreApplication::applicationFilePath();
}

int Tidemark::run() {
    if (m_instance.claim() == SingleInstance::Role::second)
        return 0;
    // Windows come and go; the program stays in the panel.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    // A dead bus means that the session has ended, and the program ends with it.
    QDBusConnection::sessionBus().connect({}, u"/org/freedesktop/DBus/Local"_s,
                                          u"org.freedesktop.DBus.Local"_s, u"Disconnected"_s,
                                          QCoreApplication::instance(), SLOT(quit()));
    // The user decides in the preferences whether it starts at login; the session manager does not.
    QObject::connect(qGuiApp, &QGuiApplication::saveStateRequest, qGuiApp,
                     [](QSessionManager& session) { session.setRestartHint(QSessionManager::RestartNever); });
    const TerminationSignals signals([] { QCoreApplication::quit(); });
    bool startsAgain = false;
    if (const Updater* updater = m_updates.controller())
        QObject::connect(updater, &Updater::restartRequested, updater, [&startsAgain] {
            startsAgain = true;
            QCoreApplication::quit();
        });
    const int code = runDelegate();
    if (startsAgain) {
        // Otherwise the new program would hand over to this one.
        m_instance.release();
        const coredumps::UserLimit limit;
        QProcess::startDetached(programPath(), {});
    }
    return code;
}

int Tidemark::runDelegate() {
    AppDelegate delegate({.http = m_http,
                          .clock = m_clock,
                          .defaults = m_defaults,
                          .keychain = *m_options.keychain,
                          .keychainWorker = m_keychainWorker,
                          .loginItem = m_loginItem,
                          .statusBar = m_statusBar,
                          .notifications = m_notifications,
                          .updates = m_updates,
                          .workspace = m_workspace,
                          .endpoints = m_options.endpoints,
                          .configPath = m_options.configPath,
                          .version = m_options.bundle.version});
    QObject::connect(&m_instance, &SingleInstance::activated, &delegate,
                     [&delegate](const QString& activationToken) {
                         offerActivationToken(activationToken);
                         delegate.showPopover();
                     });
    TrayAdvisor advisor(
        {.clock = m_clock,
         .statusBar = m_statusBar,
         .notifications = m_notifications,
         .defaults = m_defaults,
         .desktop = qEnvironmentVariable("XDG_CURRENT_DESKTOP"),
         .print = [](const QString& line) { std::fprintf(stderr, "%s\n", line.toLocal8Bit().constData()); }});
    advisor.start();
    QMetaObject::invokeMethod(
        &delegate, [&delegate] { delegate.applicationDidFinishLaunching(); }, Qt::QueuedConnection);
    const int code = QGuiApplication::exec();
    quitlimit::start();
    return code;
}

}  // namespace tidemark
