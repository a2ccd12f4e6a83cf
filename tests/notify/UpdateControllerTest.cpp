#include <QTemporaryDir>

#include "notify/UpdateController.h"
#include "tests/TestProgram.h"
#include "tests/fakes/FakeHttpClient.h"
#include "tests/fakes/FakeWorkspace.h"
#include "tests/fakes/ManualClock.h"

using namespace tidemark;
using namespace Qt::StringLiterals;

class UpdateControllerTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void bothKeysMakeAConfiguredBuild() {
        const QString feed = u"https://updates.example/appcast.xml"_s;
        const QList<std::tuple<QString, QString, bool>> rows{
            {feed, u"key"_s, true},
            {feed, QString(), false},
            {QString(), u"key"_s, false},
            {feed, u"REPLACE_WITH_SPARKLE_PUBLIC_KEY"_s, false},
            {u"REPLACE_WITH_APPCAST_URL"_s, u"key"_s, false},
            {u"replace_with_appcast_url"_s, u"key"_s, true}};
        for (const auto& [feedUrl, publicKey, isConfigured] : rows) {
            UpdateController controller = make({.feedUrl = feedUrl, .publicKey = publicKey});
            QCOMPARE(controller.isConfigured(), isConfigured);
            QCOMPARE(controller.controller() != nullptr, isConfigured);
            QCOMPARE(controller.statusDescription(),
                     isConfigured ? u"Not checked yet."_s : u"Updates aren't configured in this build."_s);
            if (isConfigured)
                continue;
            controller.checkForUpdates();
            ManualClock::settle();
            QVERIFY(m_http.requests().isEmpty());
        }
    }

    void theLastCheckIsTold() {
        m_http.answer(HttpMethod::get, u"/appcast.xml"_s,
                      httpAnswer(200, "<rss version=\"2.0\"><channel></channel></rss>"));
        UpdateController controller = make({.version = u"1.0"_s,
                                            .feedUrl = u"https://updates.example/appcast.xml"_s,
                                            .publicKey = u"key"_s});
        controller.checkForUpdates();
        QTRY_VERIFY(controller.controller()->lastUpdateCheckDate());
        const QString status = controller.statusDescription();
        QVERIFY2(status.startsWith(u"Last checked "_s) && status.endsWith(u'.'), qPrintable(status));
    }

private:
    UpdateController make(const Bundle& bundle) {
        return {bundle, [this, bundle] {
                    return std::make_unique<Updater>(
                        Updater::Services{.http = m_http,
                                          .clock = m_clock,
                                          .workspace = m_workspace,
                                          .bundle = bundle,
                                          .installedForm = {.appImagePath = m_folder.filePath(u"Tidemark"_s)},
                                          .settingsPath = m_folder.filePath(u"updates.ini"_s)});
                }};
    }

    QTemporaryDir m_folder;
    FakeHttpClient m_http;
    ManualClock m_clock;
    FakeWorkspace m_workspace;
};

TIDEMARK_TEST(UpdateControllerTest)
#include "UpdateControllerTest.moc"
