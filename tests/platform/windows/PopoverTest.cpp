#include <QGuiApplication>
#include <QKeyEvent>
#include <QProcess>
#include <QRasterWindow>
#include <QSignalSpy>

#include "platform/windows/Popover.h"
#include "tests/TestProgram.h"

namespace tidemark {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// A panel that no work area tells of, at the lower edge, and a window; both are another program's.
constexpr QRect panelArea(0, 750, 1280, 50);
constexpr QPoint item(1000, 775);
constexpr QRect otherArea(100, 100, 200, 200);
constexpr QPoint desktop(600, 50);

/// That program.
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

/// Of the window that has the focus, as the window manager says. Qt may be told of it a moment too early or
/// too late: grabs look like losses.
QString activeTitle() {
    QProcess process;
    process.start(u"xdotool"_s, {u"getactivewindow"_s, u"getwindowname"_s});
    process.waitForFinished(hangLimit);
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
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

/// The popover against a real server and window manager. The panel's call is toggle(), with a place that is
/// as wrong as some panels hand it over.
class PopoverTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
    void takesTheFocusAtThePanel();
    void pressOutsideCloses_data();
    void pressOutsideCloses();
    void closingClickDoesNotReopen();
    void lossOfTheFocusCloses();
    void keepsItsEdgeWhenItsSizeChanges();
    void withoutAPlaceItIsAWindow();
    void isDroppedSomeTimeAfterItWasClosed();
    void slotsMayDestroyIt();

private:
    void open();
    [[nodiscard]] QString typed() const { return m_content ? m_content->typed : QString(); }
    [[nodiscard]] bool hasFocus() const { return QGuiApplication::focusWindow() == m_content; }

    QProcess m_windowManager;
    QProcess m_others;
    std::unique_ptr<Popover> m_popover;
    QPointer<Content> m_content;
};

void PopoverTest::initTestCase() {
    QGuiApplication::setQuitOnLastWindowClosed(false);
    m_windowManager.start(u"openbox"_s, QStringList());
    // It says that it manages windows.
    QTRY_VERIFY(xdotool(u"get_desktop"_s));
    m_others.start(QCoreApplication::applicationFilePath(), {u"PopoverTestOthers"_s});
    QTRY_COMPARE(activeTitle(), u"other"_s);
}

void PopoverTest::init() {
    m_popover = std::make_unique<Popover>(
        [this] {
            auto content = std::make_unique<Content>();
            content->resize(300, 400);
            m_content = content.get();
            return content;
        },
        100ms);
}

void PopoverTest::cleanup() {
    m_popover.reset();
}

void PopoverTest::cleanupTestCase() {
    for (QProcess* process : {&m_others, &m_windowManager}) {
        process->kill();
        process->waitForFinished(hangLimit);
    }
}

void PopoverTest::open() {
    pointAt(item);
    xdotool(u"click 1"_s);
    m_popover->toggle({0, 28});
    QTRY_VERIFY(hasFocus());
    QTRY_COMPARE(m_content->geometry(), QRect(850, 350, 300, 400));
}

void PopoverTest::takesTheFocusAtThePanel() {
    // The first time without, the second with earlier input of our own, from which Qt takes its time.
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

void PopoverTest::pressOutsideCloses_data() {
    QTest::addColumn<QPoint>("place");
    QTest::addColumn<int>("button");
    QTest::addColumn<bool>("closes");
    QTest::newRow("desktop") << desktop << 1 << true;
    QTest::newRow("window, right button") << otherArea.center() << 3 << true;
    QTest::newRow("wheel") << item << 4 << false;
    QTest::newRow("inside") << QPoint(860, 360) << 1 << false;
    QTest::newRow("tool tip") << QPoint(820, 420) << 1 << false;
}

void PopoverTest::pressOutsideCloses() {
    QFETCH(QPoint, place);
    QFETCH(int, button);
    QFETCH(bool, closes);
    open();
    QRasterWindow toolTip;
    toolTip.setFlags(Qt::ToolTip | Qt::WindowDoesNotAcceptFocus);
    toolTip.setTransientParent(m_content);
    toolTip.setGeometry(800, 400, 100, 40);
    toolTip.show();
    QVERIFY(QTest::qWaitForWindowExposed(&toolTip));
    QSignalSpy closed(m_popover.get(), &Popover::closed);
    pointAt(place);
    xdotool(u"click %1"_s.arg(button));
    if (closes) {
        QTRY_COMPARE(closed.size(), 1);
        QVERIFY(!m_content->isVisible() && !toolTip.isVisible());
    } else {
        // What comes after it has closed nothing either.
        xdotool(u"key x"_s);
        QTRY_COMPARE(typed(), u"x"_s);
    }
    QCOMPARE(m_popover->isShown(), !closes);
}

void PopoverTest::closingClickDoesNotReopen() {
    for (const int held : {0, 1000}) {
        open();
        xdotool(u"mousedown 1"_s);
        QTRY_VERIFY(!m_popover->isShown());
        QTest::qWait(held);
        xdotool(u"mouseup 1"_s);
        m_popover->toggle(item);
        QVERIFY(!m_popover->isShown());
    }
    // Another press is another click, though the panel told nothing of the first.
    open();
    xdotool(u"click 1"_s);
    QTRY_VERIFY(!m_popover->isShown());
    xdotool(u"click 1"_s);
    m_popover->toggle(item);
    QVERIFY(m_popover->isShown());
    // A call that comes before the press was heard of.
    QTRY_VERIFY(hasFocus());
    xdotool(u"click 1"_s);
    m_popover->toggle(item);
    QVERIFY(!m_popover->isShown());
    // Long after the click it was none of it.
    open();
    xdotool(u"click 1"_s);
    QTRY_VERIFY(!m_popover->isShown());
    QTest::qWait(700);
    m_popover->toggle(item);
    QVERIFY(m_popover->isShown());
}

void PopoverTest::lossOfTheFocusCloses() {
    open();
    xdotool(u"search --name ^other$ windowactivate"_s);
    QTRY_VERIFY(!m_popover->isShown());
    // By a click on a panel that takes the focus, for all we know.
    m_popover->toggle(item);
    QVERIFY(!m_popover->isShown());
    open();
    m_popover->close();
    // Nobody clicked.
    m_popover->toggle(item);
    QVERIFY(m_popover->isShown());
}

void PopoverTest::keepsItsEdgeWhenItsSizeChanges() {
    open();
    // As an animation does, with answers to one step coming after the next one was asked for.
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

void PopoverTest::withoutAPlaceItIsAWindow() {
    m_popover->showAsWindow();
    QTRY_COMPARE(activeTitle(), u"Tidemark"_s);
    QTRY_VERIFY(!m_content->frameMargins().isNull());
    pointAt(otherArea.center());
    // What the user did last, our own connection knows nothing of.
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
    // Each form after the other.
    open();
    QVERIFY(m_content->frameMargins().isNull());
}

void PopoverTest::isDroppedSomeTimeAfterItWasClosed() {
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

void PopoverTest::slotsMayDestroyIt() {
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

}  // namespace
}  // namespace tidemark

TIDEMARK_GUI_TEST(tidemark::PopoverTest)
TIDEMARK_TEST_MAIN(PopoverTestOthers, [](int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    return tidemark::showOthers();
})

#include "PopoverTest.moc"
