#include "app/items/StatusCircle.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

#include "platform/base/Characters.h"
#include "platform/tray/StatusIcon.h"

namespace tidemark {

namespace {

constexpr QSizeF imageSize(28, 18);
constexpr double margin = 1;
constexpr int singleLetterSize = 11;
constexpr int letterSize = 10;

/// The rectangle with its edges moved to pixel borders, so that they are sharp.
QRectF onPixels(const QRectF& rect) {
    const QPointF topLeft(std::round(rect.left()), std::round(rect.top()));
    const QPointF bottomRight(std::round(rect.right()), std::round(rect.bottom()));
    return {topLeft, bottomRight};
}

void drawLetters(QPainter& painter, const QRectF& pill, const QString& text) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setBold(true);
    font.setPixelSize(firstCharacters(text, 1) == text ? singleLetterSize : letterSize);
    // The painter scales: sizes and places are exact, not rounded to whole pixels before.
    font.setHintingPreference(QFont::PreferNoHinting);
    const QFontMetricsF metrics(font);
    const double width = metrics.horizontalAdvance(text);
    // Wide scripts and emoji stay on the pill.
    const double fit = std::min(1.0, (pill.width() - 4) / width);
    QPointF start = pill.center() + QPointF(-width / 2, metrics.ascent() - metrics.height() / 2) * fit;
    // Upright strokes end at a whole pixel.
    start = painter.transform().map(start);
    start = painter.transform().inverted().map(QPointF(start.x(), std::round(start.y())));
    painter.translate(start);
    painter.scale(fit, fit);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(QPointF(), text);
}

/// Just inside of the edge, a pixel wide.
void drawRim(QPainter& painter, const QRectF& pill, const QColor& color) {
    if (!color.isValid())
        return;
    const double half = 0.5 / painter.transform().m11();
    const QRectF line = pill.adjusted(half, half, -half, -half);
    QPainterPath path;
    path.addRoundedRect(line, line.height() / 2, line.height() / 2);
    QPen pen(color);
    pen.setCosmetic(true);
    painter.strokePath(path, pen);
}

void drawPill(QPainter& painter, const QColor& color, const QString& text) {
    const QRectF rect = QRectF({}, imageSize).marginsRemoved({margin, margin, margin, margin});
    const QTransform toPixels = painter.transform();
    const QRectF pill = toPixels.inverted().mapRect(onPixels(toPixels.mapRect(rect)));
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(pill, pill.height() / 2, pill.height() / 2);
    drawRim(painter, pill, rimFor(color));
    painter.setClipRect(pill);
    if (!text.isEmpty())
        drawLetters(painter, pill, text);
    painter.restore();
}

}  // namespace

StatusImage StatusCircle::makeImage(const QColor& color, const QString& letters) {
    const QString text = firstCharacters(letters, 2).toUpper();
    return {.size = imageSize,
            .isTemplate = false,
            .draw = [color, text](QPainter& painter) { drawPill(painter, color, text); },
            .margin = margin};
}

}  // namespace tidemark
