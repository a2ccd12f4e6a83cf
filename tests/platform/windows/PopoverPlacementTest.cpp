#include "platform/windows/PopoverPlacement.h"
#include "tests/TestProgram.h"

namespace tidemark {
namespace {

constexpr QSize popoverSize(300, 400);
/// A screen to the left of the primary one and higher than it.
constexpr QRect otherScreen(-1000, -200, 1000, 800);
constexpr QRect primaryScreen(0, 0, 1280, 800);

class PopoverPlacementTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void standsBesideThePanel_data() {
        QTest::addColumn<QPoint>("place");
        QTest::addColumn<QRect>("panel");
        QTest::addColumn<QRect>("screen");
        QTest::addColumn<QRect>("available");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QRect>("expected");
        const auto row = [](const char* name, QPoint place, const QRect& panel, const QMargins& reserved,
                            const QRect& expected, QSize size = popoverSize,
                            const QRect& screen = primaryScreen) {
            QTest::newRow(name) << place << panel << screen << (screen - reserved) << size << expected;
        };
        // The work area is known.
        row("top", {600, 10}, {}, {0, 30, 0, 0}, {450, 30, 300, 400});
        row("bottom", {600, 790}, {}, {0, 0, 0, 30}, {450, 370, 300, 400});
        row("left", {10, 400}, {}, {40, 0, 0, 0}, {40, 200, 300, 400});
        row("right", {1270, 400}, {}, {0, 0, 40, 0}, {940, 200, 300, 400});
        row("upper right corner", {1275, 5}, {}, {0, 30, 0, 0}, {980, 30, 300, 400});
        row("lower left corner", {5, 795}, {}, {0, 0, 0, 30}, {0, 370, 300, 400});
        row("end of a left panel", {10, 790}, {}, {40, 0, 0, 0}, {40, 400, 300, 400});
        row("beside another panel", {1275, 5}, {}, {0, 30, 40, 0}, {940, 30, 300, 400});
        row("inside the area", {600, 35}, {}, {0, 30, 0, 0}, {450, 30, 300, 400});
        // Only the click is known, which is at the middle of the panel.
        row("thin", {600, 3}, {}, {}, {450, 32, 300, 400});
        row("middle", {600, 775}, {}, {}, {450, 352, 300, 400});
        row("far in", {600, 60}, {}, {}, {450, 64, 300, 400});
        row("side", {1260, 400}, {}, {}, {942, 200, 300, 400});
        // The panel's window is known. It may hide or float.
        row("panel", {600, 3}, {0, 0, 1280, 48}, {}, {450, 48, 300, 400});
        row("floating panel", {600, 770}, {200, 750, 900, 40}, {}, {450, 350, 300, 400});
        row("side panel", {3, 790}, {0, 0, 60, 800}, {}, {60, 400, 300, 400});
        row("small panel in a corner", {1270, 790}, {1240, 770, 40, 30}, {}, {980, 370, 300, 400});
        row("two panels", {600, 10}, {0, 0, 1280, 24}, {0, 50, 0, 0}, {450, 50, 300, 400});
        // The popover is too large for the screen.
        row("too high", {600, 10}, {}, {0, 30, 0, 50}, {450, 30, 300, 720}, {300, 2000});
        row("too high above", {600, 790}, {}, {0, 0, 0, 30}, {0, 0, 1280, 770}, {2000, 2000});
        row("other screen", {-5, -190}, {}, {0, 24, 0, 0}, {-300, -176, 300, 400}, popoverSize, otherScreen);
        row("other screen's end", {-990, 590}, {-1000, 560, 1000, 40}, {}, {-1000, 160, 300, 400},
            popoverSize, otherScreen);
    }

    void standsBesideThePanel() {
        QFETCH(QPoint, place);
        QFETCH(QRect, panel);
        QFETCH(QRect, screen);
        QFETCH(QRect, available);
        QFETCH(QSize, size);
        QFETCH(QRect, expected);
        QCOMPARE(placePopover(size, {place, panel}, {screen, available}), expected);
    }

    void trustsAPlaceWhereAPanelCanBe() {
        const QList<ScreenArea> screens{{primaryScreen, primaryScreen - QMargins(250, 0, 0, 0)},
                                        {otherScreen, otherScreen}};
        const auto chosen = [&](const QList<QPoint>& places, const QRect& panel = {}) {
            const auto panelAt = [&](QPoint place) { return panel.contains(place) ? panel : QRect(); };
            return choosePopoverAnchor(places, screens, panelAt).place;
        };
        const QPoint corner = primaryScreen.topRight();
        const QPoint middle(600, 400);
        QCOMPARE(chosen({{600, 10}, {10, 10}}), QPoint(600, 10));
        QCOMPARE(chosen({middle, {600, 790}}), QPoint(600, 790));
        QCOMPARE(chosen({{200, 300}}), QPoint(200, 300));  // reserved
        QCOMPARE(chosen({middle}, {500, 380, 200, 40}), middle);
        QCOMPARE(chosen({middle}, {0, 0, 1280, 600}), corner);  // too large, so transparent
        QCOMPARE(chosen({{-500, -190}}), QPoint(-500, -190));
        QCOMPARE(chosen({{-500, 700}}), corner);  // on no screen
        QCOMPARE(chosen({}), corner);
    }
};

}  // namespace
}  // namespace tidemark

TIDEMARK_TEST(tidemark::PopoverPlacementTest)
#include "PopoverPlacementTest.moc"
