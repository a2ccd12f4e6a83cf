#include <QGuiApplication>
#include <QKeyEvent>
#include <QProcess>
#include <QRasterWindow>
#include <QSignalSpy>
#include <QTimer>

#include "platform/windows/Popover.h"
#include "platform/x11/PointerPresses.h"
#include "tests/TestProgram.h"
#include "tests/fakes/DesktopSession.h"

namespace tidemark {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using desktopsession::activeTitle;

/// A panel at the lower edge, which reserves no space, and a window. Both belong to another program.
constexpr QRect panelArea(0, 750, 1280, 50);
constexpr QPoint item(1000, 775);
constexpr QRect otherArea(100, 100, 200, 200);
constexpr QPoint desktop(600, 50);

/// Main function of that program.
int showOthers() {
    QRasterWindow panel;
    constexpr int dock = 0x4;
    panel.setProperty("_q_xcb_wm_window_type", dock);
    panel.setGeometry(panelArea);
    panel.setFlag(Qt::FramelessWindowHint);
    panel.show();
    QRasterWindow other;
    other.setTitle(u"other"_s);
    other.setGeometry(otherArea);
    other.show();
    return QGuiApplication::exec();
}

bool xdotool(const QString& arguments) {
    QProcess process;
    process.start(u"xdotool"_s, arguments.split(u' '));
    return process.waitForFinished(hangLimit) && process.exitCode() == 0;
}

/// Runs the event loop until a timer of that time has fired. Shorter timers have fired by then, even if the
/// machine stalled meanwhile, which a wait by the clock would not guarantee.
void letTimersFire(std::chrono::milliseconds time) {
    bool isOver = false;
    QTimer::singleShot(time, [&isOver] { isOver = true; });
    QTRY_VERIFY(isOver);
}

void pointAt(QPoint place) {
    xdotool(u"mousemove %1 %2"_s.arg(place.x()).arg(place.y()));
}

class Content final : public QRasterWindow {
public:
    QString typed;

protected:
    void keyPressEvent(QKeyEvent* event) override {
        typed += event->text();
        if (event->key() == Qt::Key_Escape)
            close();
    }
};

/// Tests the popover with a real X server and window manager. The test calls toggle() in the panel's place,
/// with a place that is as wrong as some panels report it.
class PopoverTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        QGuiApplication::setQuitOnLastWindowClosed(false);
        m_windowManager.start(u"openbox"_s, QStringList());
        // Fails until the window manager is running.
        QTRY_VERIFY(xdotool(u"get_desktop"_s));
        m_others.start(QCoreApplication::applicationFilePath(), {u"PopoverTestOthers"_s});
        QTRY_COMPARE(activeTitle(), u"other"_s);
    }

    void init() {
        m_popover = std::make_unique<Popover>(
            [this] {
                auto content = std::make_unique<Content>();
                content->resize(300, 400);
                m_content = content.get();
                return content;
            },
            100ms);
    }

    void cleanup() { m_popover.reset(); }

    void cleanupTestCase() {
        for (QProcess* process : {&m_others, &m_windowManager}) {
            process->kill();
            process->waitForFinished(hangLimit);
        }
    }

    void takesTheFocusAtThePanel() {
        // In the second round, Qt knows the time of earlier input, which is older than the click.
        for (int round = 0; round < 2; ++round) {
            pointAt(otherArea.center());
            xdotool(u"click 1 key o"_s);
            QTRY_COMPARE(activeTitle(), u"other"_s);
            open();
            xdotool(u"key x"_s);
            QTRY_COMPARE(typed(), u"x"_s);
            xdotool(u"key Escape"_s);
            QTRY_VERIFY(!m_popover->isShown());
            m_content->typed.clear();
        }
    }

    void pressOutsideCloses_data() {
        QTest::addColumn<QPoint>("place");
        QTest::addColumn<int>("button");
        QTest::addColumn<bool>("closes");
        QTest::newRow("desktop") << desktop << 1 << true;
        QTest::newRow("window, right button") << otherArea.center() << 3 << true;
        QTest::newRow("wheel") << item << 4 << false;
        QTest::newRow("inside") << QPoint(860, 360) << 1 << false;
        QTest::newRow("tool tip") << QPoint(820, 420) << 1 << false;
    }

    void pressOutsideCloses() {
        QFETCH(QPoint, place);
        QFETCH(int, button);
        QFETCH(bool, closes);
        open();
        QRasterWindow toolTip;
        toolTip.setFlags(Qt::ToolTip | Qt::WindowDoesNotAcceptFocus);
        toolTip.setTransientParent(m_content);
        toolTip.setGeometry(800, 400, 100, 40);
        toolTip.show();
        QVERIFY(QTest::qWaitForWindowExposed(&toolTip, hangLimit));
        QSignalSpy closed(m_popover.get(), &Popover::closed);
        pointAt(place);
        xdotool(u"click %1"_s.arg(button));
        if (closes) {
            QTRY_COMPARE(closed.size(), 1);
            QVERIFY(!m_content->isVisible() && !toolTip.isVisible());
        } else {
            // The key press arrives after the click, which has closed nothing by then.
            xdotool(u"key x"_s);
            QTRY_COMPARE(typed(), u"x"_s);
        }
        QCOMPARE(m_popover->isShown(), !closes);
    }

    void closingClickDoesNotReopen() {
        for (const auto held : {0ms, 1000ms}) {
            open();
            xdotool(u"mousedown 1"_s);
            QTRY_VERIFY(!m_popover->isShown());
            letTimersFire(held);
            xdotool(u"mouseup 1"_s);
            m_popover->toggle(item);
            QVERIFY(!m_popover->isShown());
        }
        // Another press is another click, even if the panel has not reported the first.
        open();
        xdotool(u"click 1"_s);
        QTRY_VERIFY(!m_popover->isShown());
        xdotool(u"click 1"_s);
        m_popover->toggle(item);
        QVERIFY(m_popover->isShown());
        // The call may come before the press is read.
        QTRY_VERIFY(hasFocus());
        xdotool(u"click 1"_s);
        m_popover->toggle(item);
        QVERIFY(!m_popover->isShown());
        // A call long after the click belongs to another one.
        open();
        const auto presses = PointerPresses::watch();
        const QSignalSpy released(presses.get(), &PointerPresses::released);
        xdotool(u"click 1"_s);
        QTRY_COMPARE(released.size(), 1);
        QTRY_VERIFY(!m_popover->isShown());
        letTimersFire(700ms);
        m_popover->toggle(item);
        QVERIFY(m_popover->isShown());
    }

    void lossOfTheFocusCloses() {
        open();
        // At once, because a click on a panel may have taken the focus, and then its call follows soon.
        const QSignalSpy toggled(m_popover.get(), &Popover::closed);
        connect(m_popover.get(), &Popover::closed, m_popover.get(), [this] { m_popover->toggle(item); });
        xdotool(u"search --name ^other$ windowactivate"_s);
        QTRY_COMPARE(toggled.size(), 1);
        QVERIFY(!m_popover->isShown());
        m_popover->disconnect(m_popover.get());
        open();
        m_popover->close();
        // Nobody clicked.
        m_popover->toggle(item);
        QVERIFY(m_popover->isShown());
    }

    void keepsItsEdgeWhenItsSizeChanges() {
        open();
        // Like an animation, in which the reply to one step arrives after the request for the next one.
        for (int round = 0; round < 20; ++round) {
            for (int height = 400; height >= 200; height -= 50) {
                m_content->resize(300, height);
                QTest::qWait(round % 4);
            }
            QTRY_COMPARE(m_content->geometry(), QRect(850, 550, 300, 200));
        }
        m_popover->resize({340, 500});
        QTRY_COMPARE(m_content->geometry(), QRect(830, 250, 340, 500));
        m_content->resize(300, 2000);
        QTRY_COMPARE(m_content->geometry(), QRect(850, 0, 300, 750));
    }

    void withoutAPlaceItIsAWindow() {
        m_popover->showAsWindow();
        QTRY_COMPARE(activeTitle(), u"Tidemark"_s);
        QTRY_VERIFY(!m_content->frameMargins().isNull());
        pointAt(otherArea.center());
        // Our own connection does not see the user's last action.
        xdotool(u"click 1 key o"_s);
        QTRY_COMPARE(activeTitle(), u"other"_s);
        QVERIFY(m_popover->isShown());
        m_popover->showAsWindow();
        QTRY_COMPARE(activeTitle(), u"Tidemark"_s);
        xdotool(u"key alt+F4"_s);
        QTRY_VERIFY(!m_popover->isShown());
        m_popover->showAsWindow();
        m_popover->toggle(item);
        QVERIFY(!m_popover->isShown());
        // Anchored after ordinary.
        open();
        QVERIFY(m_content->frameMargins().isNull());
    }

    void isDroppedSomeTimeAfterItWasClosed() {
        open();
        const QPointer<Content> first = m_content;
        m_popover->close();
        m_popover->toggle(item);
        QTest::qWait(200);
        QVERIFY(first && m_popover->isShown());
        m_popover->close();
        QTRY_VERIFY(!first);
        open();
    }

    void slotsMayDestroyIt() {
        for (const auto signal : {&Popover::shown, &Popover::closed}) {
            init();
            connect(m_popover.get(), signal, this, [this] { m_popover.reset(); });
            m_popover->toggle(item);
            QTRY_VERIFY(!m_popover || m_content->isVisible());
            if (m_popover) {
                pointAt(desktop);
                xdotool(u"click 1"_s);
            }
            QTRY_VERIFY(!m_popover);
            QVERIFY(!m_content);
        }
    }

private:
    void open() {
        pointAt(item);
        xdotool(u"click 1"_s);
        m_popover->toggle({0, 28});
        QTRY_VERIFY(hasFocus());
        QTRY_COMPARE(m_content->geometry(), QRect(850, 350, 300, 400));
    }

    [[nodiscard]] QString typed() const { return m_content ? m_content->typed : QString(); }
    [[nodiscard]] bool hasFocus() const { return QGuiApplication::focusWindow() == m_content; }

    QProcess m_windowManager;
    QProcess m_others;
    std::unique_ptr<Popover> m_popover;
    QPointer<Content> m_content;
};

}  // namespace
}  // namespace tidemark

TIDEMARK_GUI_TEST(tidemark::PopoverTest)
TIDEMARK_TEST_MAIN(PopoverTestOthers, [](int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    return tidemark::showOthers();
})

#include "PopoverTest.moc"
