#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDeadlineTimer>
#include <QImage>
#include <QPolygonF>
#include <QProcess>
#include <memory>
#include <optional>
#include <vector>

#include "platform/tray/DBusStatusBar.h"
#include "tests/TestProgram.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

/// A colour that nothing else on the screen has.
constexpr QColor dotColor(0xff, 0x00, 0xc8);
constexpr int panelHeight = 30;

StatusImage triangle() {
    return {QSizeF(16, 16), true, [](QPainter& painter) {
                painter.setPen(Qt::NoPen);
                painter.setBrush(Qt::black);
                painter.drawPolygon(QPolygonF{{8, 1}, {16, 15}, {0, 15}});
            }};
}

QImage screenshot() {
    QProcess import;
    import.start(u"import"_s, {u"-silent"_s, u"-window"_s, u"root"_s, u"ppm:-"_s});
    import.waitForFinished(hangLimit);
    return QImage::fromData(import.readAllStandardOutput(), "PPM").convertToFormat(QImage::Format_RGB32);
}

/// The centre of all pixels of this colour.
std::optional<QPoint> findColor(const QImage& image, const QColor& color) {
    QRect found;
    for (int y = 0; y < image.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x)
            if (line[x] == color.rgb())
                found |= QRect(x, y, 1, 1);
    }
    return found.isNull() ? std::nullopt : std::optional(found.center());
}

/// The item in a real panel, as seen on the screen.
class PanelTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void iconIsOnTheScreen_data();
    void iconIsOnTheScreen();
    void itemsThatComeTogetherAreAllShown();
    void comesBackWithThePanel();
    void clickArrivesWithItsPlace();
    void clickOpensTheMenu();

private:
    void startPanel();
    void stopPanel();
    void createItem();
    /// Runs the event loop until the dot is on the screen, and gives its place.
    [[nodiscard]] static std::optional<QPoint> waitForDot(const QColor& color = dotColor);
    [[nodiscard]] static bool waitUntilGone(const QColor& color = dotColor);
    /// Clicks on the dot, followed by the xdotool commands `afterwards`, until `isDone`. Gives the place of
    /// the last click.
    static std::optional<QPoint> clickUntil(const std::function<bool()>& isDone,
                                            const QStringList& afterwards = {});

    QProcess m_windowManager;
    QProcess m_panel;
    DBusStatusBar m_bar{u"Tidemark"_s};
    std::unique_ptr<StatusItem> m_item;
};

void PanelTest::initTestCase() {
    m_windowManager.start(u"openbox"_s, QStringList());
    QVERIFY(m_windowManager.waitForStarted(hangLimit));
}

void PanelTest::cleanup() {
    m_item.reset();
    stopPanel();
}

void PanelTest::startPanel() {
    m_panel.setProcessChannelMode(QProcess::ForwardedChannels);
    m_panel.start(QStringLiteral(TESTS_FOLDER "/start-panel"), {QString::number(panelHeight)});
    QVERIFY(m_panel.waitForStarted(hangLimit));
}

void PanelTest::stopPanel() {
    m_panel.kill();
    m_panel.waitForFinished(hangLimit);
    // The tray is in another process, which exits a little later.
    QTRY_VERIFY(
        !QDBusConnection::sessionBus().interface()->isServiceRegistered(u"org.kde.StatusNotifierWatcher"_s));
}

void PanelTest::createItem() {
    m_item = m_bar.createStatusItem(u"tidemark"_s);
    QVERIFY(m_item);
    m_item->setImage(triangle());
    m_item->setDot(dotColor);
    m_item->setLabel(u"3 live"_s);
}

std::optional<QPoint> PanelTest::waitForDot(const QColor& color) {
    const QDeadlineTimer deadline(hangLimit);
    std::optional<QPoint> dot = findColor(screenshot(), color);
    while (!dot && !deadline.hasExpired()) {
        QTest::qWait(20);
        dot = findColor(screenshot(), color);
    }
    return dot;
}

bool PanelTest::waitUntilGone(const QColor& color) {
    const QDeadlineTimer deadline(hangLimit);
    while (findColor(screenshot(), color)) {
        if (deadline.hasExpired())
            return false;
        QTest::qWait(20);
    }
    return true;
}

std::optional<QPoint> PanelTest::clickUntil(const std::function<bool()>& isDone,
                                            const QStringList& afterwards) {
    const QDeadlineTimer deadline(hangLimit);
    std::optional<QPoint> dot;
    // The icon may move until the panel has started, so a click that misses it is repeated.
    while (!isDone() && !deadline.hasExpired()) {
        dot = waitForDot();
        if (dot) {
            const QStringList click{u"mousemove"_s, QString::number(dot->x()), QString::number(dot->y()),
                                    u"click"_s, u"1"_s};
            QProcess::execute(u"xdotool"_s, click + afterwards);
            (void)QTest::qWaitFor(isDone, hangLimit / 12);
        }
    }
    return dot;
}

void PanelTest::iconIsOnTheScreen_data() {
    QTest::addColumn<bool>("panelFirst");
    QTest::newRow("panel first") << true;
    QTest::newRow("panel last") << false;
}

void PanelTest::iconIsOnTheScreen() {
    QFETCH(bool, panelFirst);
    if (panelFirst) {
        startPanel();
        QTRY_VERIFY(QDBusConnection::sessionBus().interface()->isServiceRegistered(
            u"org.kde.StatusNotifierWatcher"_s));
        createItem();
    } else {
        createItem();
        startPanel();
    }
    const std::optional<QPoint> dot = waitForDot();
    QVERIFY(dot);
    QVERIFY(dot->y() < panelHeight);

    const QColor changed(0x00, 0xff, 0xc8);
    m_item->setDot(changed);
    m_item->setLabel({});
    QVERIFY(waitForDot(changed));
    QVERIFY(waitUntilGone(dotColor));

    m_item.reset();
    QVERIFY(waitUntilGone(changed));
}

void PanelTest::itemsThatComeTogetherAreAllShown() {
    startPanel();
    QTRY_VERIFY(
        QDBusConnection::sessionBus().interface()->isServiceRegistered(u"org.kde.StatusNotifierWatcher"_s));
    const QList<QColor> colors{dotColor, QColor(0xc8, 0xff, 0x00), QColor(0x00, 0xc8, 0xff)};
    std::vector<std::unique_ptr<StatusItem>> items;
    for (const QColor& color : colors) {
        items.push_back(m_bar.createStatusItem(u"together-"_s + color.name()));
        items.back()->setImage(
            {QSizeF(16, 16), false, [color](QPainter& painter) { painter.fillRect(0, 0, 16, 16, color); }});
    }
    for (const QColor& color : colors)
        QVERIFY2(waitForDot(color), qPrintable(color.name()));
}

void PanelTest::comesBackWithThePanel() {
    createItem();
    startPanel();
    QVERIFY(waitForDot());
    stopPanel();
    QVERIFY(waitUntilGone());
    startPanel();
    QVERIFY(waitForDot());
}

void PanelTest::clickArrivesWithItsPlace() {
    createItem();
    QList<QPoint> clicks;
    m_item->setAction([&clicks](QPoint place) { clicks.append(place); });
    startPanel();
    const std::optional<QPoint> dot = clickUntil([&clicks] { return !clicks.isEmpty(); });
    QVERIFY(dot && !clicks.isEmpty());
    const QPoint distance = clicks.constFirst() - *dot;
    QVERIFY2(distance.manhattanLength() < panelHeight,
             qPrintable(u"%1,%2"_s.arg(distance.x()).arg(distance.y())));
}

void PanelTest::clickOpensTheMenu() {
    createItem();
    int chosen = 0;
    m_item->setMenu(
        {{.identifier = u"heading"_s, .title = u"api_v2"_s},
         {.identifier = u"line"_s, .isSeparator = true},
         {.identifier = u"refresh"_s, .title = u"Refresh Now"_s, .action = [&chosen] { ++chosen; }},
         {.identifier = u"quit"_s, .title = u"Quit"_s, .action = [] {}}});
    startPanel();
    // The first entry that can be chosen.
    const QStringList keys{u"sleep"_s, u"0.3"_s, u"key"_s, u"Home"_s, u"Return"_s};
    QVERIFY(clickUntil([&chosen] { return chosen > 0; }, keys));
    QCOMPARE(chosen, 1);
}

}  // namespace
}  // namespace tidemark

TIDEMARK_TEST(tidemark::PanelTest)
#include "PanelTest.moc"
