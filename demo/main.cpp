#include <QCommandLineParser>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>

#include "app/Tidemark.h"
#include "config/ConfigStore.h"
#include "demo/DemoKeyring.h"
#include "platform/base/TerminationSignals.h"
#include "sandbox/MemoryKeychain.h"
#include "sandbox/Sandbox.h"

namespace {

using namespace Qt::StringLiterals;
using tidemark::sandbox::DemoKeyring;
using tidemark::sandbox::MemoryKeychain;
using tidemark::sandbox::Sandbox;
using tidemark::sandbox::SandboxOptions;

struct DemoOptions {
    SandboxOptions sandbox;
    /// A sandbox that runs elsewhere with the same seed and sizes; empty for one of our own.
    QUrl address;
    qint64 interval = 10;
    int pinned = 2;
    /// Of the releases of a sandbox that runs elsewhere; empty for no updates.
    QString updateKey;
    bool isFirstStart = false;
    bool usesKeyring = false;
};

DemoOptions parseOptions(const QGuiApplication& application) {
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"The real program on made-up projects. Settings and tokens are gone when it ends."_s);
    parser.addHelpOption();
    const QCommandLineOption address(u"address"_s, u"Use the sandbox that runs there."_s, u"address"_s);
    const QCommandLineOption seed(u"seed"_s, u"Equal seeds give equal worlds."_s, u"number"_s, u"1"_s);
    const QCommandLineOption projects(u"projects"_s, u"How many projects in all."_s, u"number"_s, u"12"_s);
    const QCommandLineOption speed(u"speed"_s, u"How fast the world lives; 0 freezes it."_s, u"factor"_s,
                                   u"2"_s);
    const QCommandLineOption interval(u"interval"_s, u"Seconds between polls."_s, u"seconds"_s, u"10"_s);
    const QCommandLineOption pinned(u"pinned"_s, u"How many projects have an item of their own."_s,
                                    u"number"_s, u"2"_s);
    const QCommandLineOption updateKey(
        u"update-key"_s, u"The key that the releases of that sandbox are signed with."_s, u"key"_s);
    const QCommandLineOption firstStart(u"first-start"_s, u"Start without any settings."_s);
    const QCommandLineOption keyring(
        u"keyring"_s, u"Keep the tokens in the desktop's keyring, where they stay, apart from real ones."_s);
    parser.addOptions({address, seed, projects, speed, interval, pinned, updateKey, firstStart, keyring});
    parser.process(application);
    return {.sandbox = {.seed = parser.value(seed).toULongLong(),
                        .projects = parser.value(projects).toInt(),
                        .speed = parser.value(speed).toDouble()},
            .address = QUrl(parser.value(address)),
            .interval = parser.value(interval).toLongLong(),
            .pinned = parser.value(pinned).toInt(),
            .updateKey = parser.value(updateKey),
            .isFirstStart = parser.isSet(firstStart),
            .usesKeyring = parser.isSet(keyring)};
}

/// Every account of the sandbox, set up as if the user had.
tidemark::AppConfiguration configurationFor(const Sandbox& sandbox, qint64 interval) {
    tidemark::AppConfiguration configuration{.cloudflareToken = sandbox.cloudflareToken(),
                                             .pollingIntervalSeconds = interval};
    for (const auto& account : sandbox.accounts()) {
        tidemark::VercelAccount configured = tidemark::VercelAccount::makeDefault();
        configured.name = account.name;
        configured.teamId = account.teamId;
        configured.apiToken = account.token;
        configuration.accounts.append(configured);
    }
    return configuration;
}

/// As if the user had pinned the first projects of the list.
void pinProjects(Sandbox& sandbox, int count, const QString& defaultsPath) {
    const auto world = sandbox.world();
    QStringList ids;
    for (int i = 0; i < std::min(count, world->projectCount()); ++i)
        ids << world->projectAt(i).id;
    tidemark::UserDefaults(defaultsPath).setValue(u"individualIds"_s, ids);
}

/// The demo's stand-in for the file of an AppImage: something to replace, and to start after that.
QString makeProgramFile(const QTemporaryDir& folder) {
    QString path = folder.filePath(u"Tidemark.AppImage"_s);
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write("#!/bin/sh\n");
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return path;
}

/// A fast connection shows no progress.
QUrl slowFeed(const QUrl& address) {
    QUrl feed(address);
    feed.setPath(u"/updates/appcast.xml"_s);
    feed.setQuery(u"size=8000000&seconds=6"_s);
    return feed;
}

std::unique_ptr<tidemark::Keychain> makeKeychain(const DemoOptions& options) {
    if (options.usesKeyring)
        return std::make_unique<DemoKeyring>();
    return std::make_unique<MemoryKeychain>();
}

bool storeSettings(Sandbox& sandbox, const DemoOptions& options, const QTemporaryDir& folder,
                   tidemark::Keychain& keychain) {
    if (options.isFirstStart)
        return folder.isValid();
    const tidemark::ConfigStore store(folder.filePath(u"config.json"_s), keychain);
    if (!folder.isValid() || !store.save(configurationFor(sandbox, options.interval)))
        return false;
    pinProjects(sandbox, options.pinned, folder.filePath(u"defaults.ini"_s));
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    tidemark::TerminationSignals::exitUntilMade();
    if (!tidemark::Tidemark::hasDesktop()) {
        std::fputs("The demo needs a graphical session; ./run demo brings one along.\n", stderr);
        return 1;
    }
    const QString identifier = u"com.tidemark.Demo"_s;
    tidemark::SingleInstance instance(identifier);
    tidemark::Tidemark::prepareApplication();
    QGuiApplication application(argc, argv);
    QGuiApplication::setDesktopFileName(identifier);
    DemoOptions demoOptions = parseOptions(application);

    Sandbox sandbox(demoOptions.sandbox);
    if (demoOptions.address.isEmpty()) {
        if (!sandbox.start()) {
            std::fputs("The sandbox cannot be started.\n", stderr);
            return 1;
        }
        demoOptions.address = sandbox.baseUrl();
        demoOptions.updateKey = sandbox.updatePublicKey();
        std::printf("The sandbox is at %s\n", qPrintable(demoOptions.address.toString()));
        std::fflush(stdout);
    }

    const QTemporaryDir settings;
    auto keychain = makeKeychain(demoOptions);
    if (!storeSettings(sandbox, demoOptions, settings, *keychain)) {
        std::fputs("The demo's settings cannot be written.\n", stderr);
        return 1;
    }
    tidemark::Tidemark program({.bundle = {.identifier = identifier,
                                           .version = QStringLiteral(TIDEMARK_VERSION),
                                           .feedUrl = slowFeed(demoOptions.address).toString(),
                                           .publicKey = demoOptions.updateKey},
                                .endpoints = tidemark::Endpoints::below(demoOptions.address),
                                .insecureLoopback = tidemark::NetworkHttpClient::InsecureLoopback::allowed,
                                .configPath = settings.filePath(u"config.json"_s),
                                .defaultsPath = settings.filePath(u"defaults.ini"_s),
                                .updateSettingsPath = settings.filePath(u"updates.ini"_s),
                                .installedForm = {.appImagePath = makeProgramFile(settings),
                                                  .cacheFolder = settings.filePath(u"cache"_s)},
                                .autostartFolder = settings.filePath(u"autostart"_s),
                                .keychain = std::move(keychain)},
                               instance);
    return program.run();
}
