#include <algorithm>
#include <cmath>

#include "platform/tray/DBusStatusBar.h"
#include "platform/tray/StatusIcon.h"
#include "tests/TestProgram.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

StatusImage filled(QSizeF size, const QColor& color, bool isTemplate = false) {
    return {size, isTemplate,
            [size, color](QPainter& painter) { painter.fillRect(QRectF({0, 0}, size), color); }};
}

double contrast(const QColor& one, const QColor& other) {
    const auto luminance = [](const QColor& color) {
        const auto linear = [](double c) {
            return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
               0.0722 * linear(color.blueF());
    };
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

class StatusIconTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void pixmapsAreSquareAndInNetworkOrder() {
        const IconPixmaps pixmaps = statusIconPixmaps(filled({16, 16}, QColor(0x10, 0x20, 0x30, 0x80)), {});
        QList<int> sizes;
        for (const IconPixmap& pixmap : pixmaps) {
            sizes.append(pixmap.width);
            QCOMPARE(pixmap.height, pixmap.width);
            QCOMPARE(pixmap.bytes.size(), qsizetype(4) * pixmap.width * pixmap.height);
            // The colour is not premultiplied.
            QCOMPARE(pixmap.bytes.first(4).toHex(), QByteArray("80102030"));
        }
        QCOMPARE(sizes, (QList<int>{16, 22, 24, 32, 44, 48, 64}));
    }

    void dotStandsOffInTheCorner() {
        const QColor dot(0x34, 0xc7, 0x59);
        for (const int size : {16, 22, 24, 32, 44, 48, 64}) {
            const QImage icon = drawStatusIcon(filled({16, 16}, Qt::blue), dot, size);
            const int center = size - size * 23 / 100 - 1;
            const int diameter = qRound(size * 0.46);
            QCOMPARE(icon.pixelColor(center, center), dot);
            QVERIFY(icon.pixelColor(center, size - diameter).green() > 0x80);
            // A transparent ring separates the dot from the image. The image outside of the ring is complete.
            QVERIFY(icon.pixelColor(center, size - diameter - 1).alpha() < 0x80);
            QCOMPARE(icon.pixelColor(size / 4, size / 4), QColor(Qt::blue));
            QCOMPARE(icon.pixelColor(size - 1, size / 4), QColor(Qt::blue));
            QCOMPARE(icon.pixelColor(size / 4, size - 1), QColor(Qt::blue));
        }
    }

    void templateReadsOnEveryPanel() {
        const QImage icon = drawStatusIcon(filled({16, 16}, Qt::black, true), {}, 22);
        for (const QColor panel :
             {QColor(0xf6, 0xf5, 0xf4), QColor(Qt::white), QColor(0x35, 0x35, 0x35), QColor(Qt::black)})
            QVERIFY(contrast(icon.pixelColor(11, 11), panel) > 3);
    }

    void wideImageFitsIntoTheSquare() {
        const QImage icon = drawStatusIcon(filled({28, 18}, Qt::red), {}, 56);
        QCOMPARE(icon.pixelColor(28, 9).alpha(), 0);
        QCOMPARE(icon.pixelColor(0, 28), QColor(Qt::red));
        QCOMPARE(icon.pixelColor(55, 10), QColor(Qt::red));
        QCOMPARE(icon.pixelColor(28, 45), QColor(Qt::red));
        QCOMPARE(icon.pixelColor(28, 46).alpha(), 0);
    }

    void imageWithoutContentIsTransparent() {
        const QImage icon = drawStatusIcon({}, {}, 16);
        QCOMPARE(icon.size(), QSize(16, 16));
        QCOMPARE(icon.pixelColor(8, 8).alpha(), 0);
    }

    void noItemWithoutASessionBus() {
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
        DBusStatusBar bar(u"Tidemark"_s);
        QVERIFY(!bar.createStatusItem(u"tidemark"_s));
    }
};

}  // namespace
}  // namespace tidemark

TIDEMARK_TEST(tidemark::StatusIconTest)
#include "StatusIconTest.moc"
