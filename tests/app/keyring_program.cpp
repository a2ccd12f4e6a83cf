#include <QGuiApplication>

#include "app/Tidemark.h"
#include "platform/base/TerminationSignals.h"
#include "platform/keyring/SecretServiceKeychain.h"

/// The program with the real keyring and a sandbox: keyring_program ADDRESS FOLDER
int main(int argc, char** argv) {
    using namespace tidemark;
    using namespace Qt::StringLiterals;
    TerminationSignals::exitUntilMade();
    const QString identifier = u"com.tidemark.KeyringProgram"_s;
    SingleInstance instance(identifier);
    Tidemark::prepareApplication();
    const QGuiApplication application(argc, argv);
    const QString folder = QString::fromLocal8Bit(argv[2]) + u'/';
    Tidemark program({.bundle = {.identifier = identifier},
                      .endpoints = Endpoints::below(QUrl(QString::fromLocal8Bit(argv[1]))),
                      .insecureLoopback = NetworkHttpClient::InsecureLoopback::allowed,
                      .configPath = folder + u"config.json"_s,
                      .defaultsPath = folder + u"defaults.ini"_s,
                      .updateSettingsPath = folder + u"updates.ini"_s,
                      .installedForm = {},
                      .autostartFolder = folder + u"autostart"_s,
                      .keychain = std::make_unique<SecretServiceKeychain>()},
                     instance);
    return program.run();
}
