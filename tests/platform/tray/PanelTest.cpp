#include <QImage>
#include <QPolygonF>
#include <memory>
#include <optional>
#include <vector>

#include "platform/tray/DBusStatusBar.h"
#include "tests/TestProgram.h"
#include "tests/fakes/DesktopSession.h"

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

bool isSeen(const QColor& color) {
    return findColor(screenshot(), color).has_value();
}

/// The item in a real panel, as seen on the screen.
class PanelTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        m_windowManager.start(u"openbox"_s, QStringList());
        QVERIFY(m_windowManager.waitForStarted(hangLimit));
    }

    void cleanup() {
        m_item.reset();
        // The tray is in another process, which exits a little later.
        desktopsession::killAndWait(m_panel, desktopsession::watcherName);
    }

    void iconIsOnTheScreen_data() {
        QTest::addColumn<bool>("panelFirst");
        QTest::newRow("panel first") << true;
        QTest::newRow("panel last") << false;
    }

    void iconIsOnTheScreen() {
        QFETCH(bool, panelFirst);
        if (panelFirst)
            startPanel();
        createItem();
        if (!panelFirst)
            startPanel();
        QTRY_VERIFY(isSeen(dotColor));
        QVERIFY(findColor(screenshot(), dotColor)->y() < panelHeight);

        const QColor changed(0x00, 0xff, 0xc8);
        m_item->setDot(changed);
        m_item->setLabel({});
        QTRY_VERIFY(isSeen(changed));
        QTRY_VERIFY(!isSeen(dotColor));

        m_item.reset();
        QTRY_VERIFY(!isSeen(changed));
    }

    void itemsThatComeTogetherAreAllShown() {
        startPanel();
        const QList<QColor> colors{dotColor, QColor(0xc8, 0xff, 0x00), QColor(0x00, 0xc8, 0xff)};
        std::vector<std::unique_ptr<StatusItem>> items;
        for (const QColor& color : colors) {
            items.push_back(m_bar.createStatusItem(u"together-"_s + color.name()));
            items.back()->setImage({QSizeF(16, 16), false,
                                    [color](QPainter& painter) { painter.fillRect(0, 0, 16, 16, color); }});
        }
        for (const QColor& color : colors)
            QTRY_VERIFY2(isSeen(color), qPrintable(color.name()));
    }

    void clickOpensTheMenu() {
        createItem();
        int chosen = 0;
        m_item->setMenu(
            {{.identifier = u"heading"_s, .title = u"api_v2"_s},
             {.identifier = u"line"_s, .isSeparator = true},
             {.identifier = u"refresh"_s, .title = u"Refresh Now"_s, .action = [&chosen] { ++chosen; }},
             {.identifier = u"quit"_s, .title = u"Quit"_s, .action = [] {}}});
        startPanel();
        // The icon may move until the panel has started, so a click that misses it is repeated.
        for (int attempt = 0; attempt < 12 && chosen == 0; ++attempt) {
            QTRY_VERIFY(isSeen(dotColor));
            const QPoint dot = findColor(screenshot(), dotColor).value_or(QPoint());
            // The last two keys choose the first entry that can be chosen.
            QProcess::execute(u"xdotool"_s,
                              {u"mousemove"_s, QString::number(dot.x()), QString::number(dot.y()), u"click"_s,
                               u"1"_s, u"sleep"_s, u"0.3"_s, u"key"_s, u"Home"_s, u"Return"_s});
            (void)QTest::qWaitFor([&chosen] { return chosen > 0; }, hangLimit / 12);
        }
        QCOMPARE(chosen, 1);
    }

private:
    void startPanel() {
        m_panel.setProcessChannelMode(QProcess::ForwardedChannels);
        desktopsession::launchPanel(m_panel, QStringLiteral(TESTS_FOLDER "/start-panel"),
                                    {QString::number(panelHeight)});
    }

    void createItem() {
        m_item = m_bar.createStatusItem(u"tidemark"_s);
        QVERIFY(m_item);
        m_item->setImage(triangle());
        m_item->setDot(dotColor);
        m_item->setLabel(u"3 live"_s);
    }

    QProcess m_windowManager;
    QProcess m_panel;
    DBusStatusBar m_bar{u"Tidemark"_s};
    std::unique_ptr<StatusItem> m_item;
};

}  // namespace
}  // namespace tidemark

TIDEMARK_TEST(tidemark::PanelTest)
#include "PanelTest.moc"
