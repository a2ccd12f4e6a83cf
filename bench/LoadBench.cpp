#include <QCoroTask>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <cstdio>

#include "app/AppDelegate.h"
#include "platform/http/NetworkHttpClient.h"
#include "sandbox/MemoryKeychain.h"
#include "sandbox/Sandbox.h"
#include "tests/fakes/FakeLoginItem.h"
#include "tests/fakes/FakeNotificationCenter.h"
#include "tests/fakes/FakeSoundPlayer.h"
#include "tests/fakes/FakeStatusBar.h"
#include "tests/fakes/FakeWorkspace.h"

namespace {

using namespace tidemark;
using namespace Qt::StringLiterals;

/// The longest time for which the event loop did not come round: a timer of a millisecond notes its delays.
class Stretches final {
public:
    Stretches() {
        m_heartbeat.setTimerType(Qt::PreciseTimer);
        m_heartbeat.callOnTimeout(&m_heartbeat, [this] {
            m_longest = std::max(m_longest, m_sinceBeat.nsecsElapsed() - 1'000'000);
            m_sinceBeat.start();
        });
        m_sinceBeat.start();
        m_heartbeat.start(1);
    }

    [[nodiscard]] double longestMilliseconds() const { return static_cast<double>(m_longest) / 1e6; }

private:
    QTimer m_heartbeat;
    QElapsedTimer m_sinceBeat;
    qint64 m_longest = 0;
};

void measureDecoding(NetworkHttpClient& http, const sandbox::Sandbox& sandbox) {
    const auto account = sandbox.accounts().last();
    QUrl url = sandbox.baseUrl();
    url.setPath(u"/v9/projects"_s);
    url.setQuery(u"limit=100&teamId="_s + account.teamId);
    HttpRequest request{.url = url, .headers = {{"Authorization", "Bearer " + account.token.toUtf8()}}};
    const HttpResult page = QCoro::waitFor(http.send(request, {}));
    if (!page) {
        std::printf("no page: %s\n", qPrintable(description(page.error())));
        return;
    }
    QList<qint64> times;
    qsizetype count = 0;
    for (int i = 0; i < 51; ++i) {
        QElapsedTimer timer;
        timer.start();
        count = ProjectsResponse::decode(page->body)->projects.size();
        times.append(timer.nsecsElapsed());
    }
    std::ranges::sort(times);
    std::printf("decoding a page of %lld projects, %lld KB: %.1f ms (median of %lld, worst %.1f ms)\n",
                static_cast<long long>(count), static_cast<long long>(page->body.size() / 1024),
                static_cast<double>(times.at(times.size() / 2)) / 1e6, static_cast<long long>(times.size()),
                static_cast<double>(times.last()) / 1e6);
}

void measureLoading(NetworkHttpClient& http, const sandbox::Sandbox& sandbox) {
    const QTemporaryDir folder;
    SystemClock clock;
    UserDefaults defaults(folder.filePath(u"defaults.ini"_s));
    sandbox::MemoryKeychain keychain;
    QThreadPool worker;
    worker.setMaxThreadCount(1);
    FakeLoginItem loginItem;
    FakeStatusBar statusBar;
    FakeNotificationCenter center;
    FakeSoundPlayer sounds;
    FakeWorkspace workspace;
    NotificationManager notifications(center, sounds, workspace, clock, {});
    UpdateController updates({}, {});
    const QString configPath = folder.filePath(u"config.json"_s);
    AppConfiguration configuration;
    for (const auto& account : sandbox.accounts())
        configuration.accounts.append({account.name, account.name, account.teamId, account.token});
    if (!ConfigStore(configPath, keychain).save(configuration))
        return;
    AppDelegate delegate({.http = http,
                          .clock = clock,
                          .defaults = defaults,
                          .keychain = keychain,
                          .keychainWorker = worker,
                          .loginItem = loginItem,
                          .statusBar = statusBar,
                          .notifications = notifications,
                          .updates = updates,
                          .workspace = workspace,
                          .endpoints = Endpoints::below(sandbox.baseUrl()),
                          .configPath = configPath});
    const Stretches stretches;
    QElapsedTimer timer;
    timer.start();
    // Loaded, and one deployment polled.
    QObject::connect(&delegate.appState(), &AppState::deploymentsChanged, qApp, &QCoreApplication::quit);
    QTimer::singleShot(60000, qApp, &QCoreApplication::quit);
    delegate.applicationDidFinishLaunching();
    QCoreApplication::exec();
    std::printf("loading %lld projects: %lld ms, the UI thread busy for %.1f ms at most at a stretch\n",
                static_cast<long long>(delegate.appState().allProjects().size()),
                static_cast<long long>(timer.elapsed()), stretches.longestMilliseconds());
}

/// What a large account remembers, while the disk may be busy with the write before.
void measureDefaults() {
    const QTemporaryDir folder;
    UserDefaults defaults(folder.filePath(u"defaults.ini"_s));
    QStringList ids;
    for (int i = 0; i < 2000; ++i)
        ids.append(u"prj_0123456789abcdefghij%1"_s.arg(i));
    const QByteArray projects(250'000, '"');
    qint64 longest = 0;
    for (int round = 0; round < 5; ++round) {
        QElapsedTimer timer;
        timer.start();
        defaults.setValue(u"cachedProjects"_s, projects);
        defaults.setValue(u"trackedIds"_s, ids);
        defaults.setValue(u"seenProjectIds"_s, ids);
        longest = std::max(longest, timer.nsecsElapsed());
    }
    std::printf("remembering 2000 projects: %.3f ms at most\n", static_cast<double>(longest) / 1e6);
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    sandbox::Sandbox sandbox({.projects = 2000, .speed = 0});
    if (!sandbox.start())
        return 1;
    NetworkHttpClient http({.insecureLoopback = NetworkHttpClient::InsecureLoopback::allowed});
    measureDecoding(http, sandbox);
    measureLoading(http, sandbox);
    measureDefaults();
    return 0;
}
