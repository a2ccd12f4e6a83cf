#include <QTemporaryDir>

#include "app/items/TrayAdvisor.h"
#include "tests/TestProgram.h"
#include "tests/fakes/FakeNotificationCenter.h"
#include "tests/fakes/FakeSoundPlayer.h"
#include "tests/fakes/FakeStatusBar.h"
#include "tests/fakes/FakeWorkspace.h"
#include "tests/fakes/ManualClock.h"

using namespace tidemark;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class TrayAdvisorTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_center = std::make_unique<FakeNotificationCenter>();
        m_printed.clear();
    }

    void aPanelMayTakeItsTime() {
        QCOMPARE(run(u"XFCE"_s, 9s), QString());
        QVERIFY(m_printed.isEmpty());
    }

    void itIsSaidOnceOnEachDesktop() {
        QVERIFY(run(u"XFCE"_s).contains(u"Status Tray Plugin"_s));
        QVERIFY(m_printed.isEmpty());
        QVERIFY(run(u"GNOME"_s).contains(u"AppIndicator"_s));
        QCOMPARE(run(u"XFCE"_s), QString());
        QVERIFY(m_printed.takeFirst().contains(u"Status Tray Plugin"_s));
        // A tray was there and has gone.
        QCOMPARE(run(u"XFCE"_s, 1s), QString());
        QVERIFY(run(u"XFCE"_s).contains(u"Status Tray Plugin"_s));
        QCOMPARE(run(u"GNOME"_s), QString());
    }

    void whatNothingCanShowIsPrintedAndSaidAgain() {
        m_center->isAvailable = false;
        for (int i = 1; i <= 2; ++i) {
            QCOMPARE(run(u"sway"_s), QString());
            QCOMPARE(m_printed.size(), i);
        }
        m_center->isAvailable = true;
        QVERIFY(run(u"sway"_s).contains(u"waybar"_s));
    }

    void aRunThatEndsEarlySaysNothing() {
        m_isShort = true;
        QCOMPARE(run(u"XFCE"_s), QString());
        QVERIFY(m_printed.isEmpty());
        m_isShort = false;
    }

    void oneOfTheDesktopsNamesIsEnough() {
        QVERIFY(TrayAdvisor::advice(u"ubuntu:GNOME"_s).contains(u"AppIndicator"_s));
        QVERIFY(TrayAdvisor::advice(u"X-Cinnamon"_s).contains(u"XApp"_s));
        QVERIFY(TrayAdvisor::advice(u"sway:wlroots"_s).contains(u"waybar"_s));
        for (const auto& unknown : {u"i3"_s, QString()})
            QVERIFY(TrayAdvisor::advice(unknown).contains(u"xfce4-panel"_s));
    }

private:
    /// Later than anybody looks.
    static constexpr auto never = 1h;

    /// A run of the program. What it showed.
    QString run(const QString& desktop, std::chrono::seconds panelComesAfter = never) {
        m_center->requests.clear();
        ManualClock clock;
        FakeStatusBar bar;
        UserDefaults defaults(m_folder->filePath(u"defaults.ini"_s));
        FakeSoundPlayer sounds;
        FakeWorkspace workspace;
        NotificationManager notifications(*m_center, sounds, workspace, clock, {.identifier = u"test"_s});
        TrayAdvisor advisor({.clock = clock,
                             .statusBar = bar,
                             .notifications = notifications,
                             .defaults = defaults,
                             .desktop = desktop,
                             .print = [this](const QString& line) { m_printed.append(line); }});
        advisor.start();
        bar.isShown = false;
        for (auto second = 0s; second < (m_isShort ? 5s : 60s); second += 1s) {
            bar.isShown = bar.isShown || second >= panelComesAfter;
            clock.advance(1s);
        }
        return m_center->requests.isEmpty() ? QString() : m_center->requests.constFirst().body;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<FakeNotificationCenter> m_center;
    QStringList m_printed;
    bool m_isShort = false;
};

TIDEMARK_TEST(TrayAdvisorTest)
#include "TrayAdvisorTest.moc"
