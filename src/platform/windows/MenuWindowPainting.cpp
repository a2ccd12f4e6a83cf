#include <QFontMetrics>
#include <QPalette>
#include <QPolygonF>

#include "platform/windows/MenuWindow.h"
#include "platform/windows/MenuWindowLook.h"

namespace tidemark {
namespace {

constexpr int rowRadius = 5;
constexpr qreal arrowSize = 3;
/// Shares of the text colour, mixed with the background.
constexpr float disabledShare = 0.55F;
constexpr float borderShare = 0.25F;
constexpr float lineShare = 0.15F;

QColor mixed(const QColor& front, const QColor& back, float share) {
    const auto mix = [share](float a, float b) { return (a * share) + (b * (1 - share)); };
    return QColor::fromRgbF(mix(front.redF(), back.redF()), mix(front.greenF(), back.greenF()),
                            mix(front.blueF(), back.blueF()));
}

/// The text colour mixed with the background. QPalette::Disabled is not used, because palettes of other
/// toolkits often lack these colours.
QColor textColor(float share) {
    const QPalette palette = QGuiApplication::palette();
    return mixed(palette.color(QPalette::WindowText), palette.color(QPalette::Window), share);
}

}  // namespace

void MenuWindow::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const QRect window(QPoint(), size());
    painter.fillRect(window, QGuiApplication::palette().color(QPalette::Window));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(0, -m_offset);
    for (int index = 0; index < m_rows.size(); ++index)
        paintRow(painter, m_rows.at(index), index == m_current);
    painter.resetTransform();
    paintStrip(painter, stripAbove(), true);
    paintStrip(painter, stripBelow(), false);
    painter.setPen(QPen(textColor(borderShare), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(window).adjusted(0.5, 0.5, -0.5, -0.5));
}

void MenuWindow::paintRow(QPainter& painter, const Row& row, bool isHighlighted) const {
    const QRect area(menulook::menuPadding, row.top, width() - (2 * menulook::menuPadding), row.height);
    const QRect text = area.marginsRemoved(menulook::rowPadding);
    if (row.item.isSeparator) {
        painter.fillRect(QRect(text.x(), area.center().y(), text.width(), 1), textColor(lineShare));
        return;
    }
    const QPalette palette = QGuiApplication::palette();
    if (isHighlighted) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(palette.color(QPalette::Highlight));
        painter.drawRoundedRect(area, rowRadius, rowRadius);
    }
    const QFont font = menulook::fontOf(row.item);
    const QFontMetrics metrics(font);
    painter.setFont(font);
    const QString shortcut = menulook::shortcutOf(row.item);
    const int room =
        text.width() - (shortcut.isEmpty() ? 0 : menulook::shortcutGap + metrics.horizontalAdvance(shortcut));
    constexpr int flags = Qt::AlignVCenter | Qt::TextSingleLine;
    const QColor normal = isHighlighted ? palette.color(QPalette::HighlightedText) : textColor(1);
    painter.setPen(row.item.isEnabled() || row.item.isHeading ? normal : textColor(disabledShare));
    painter.drawText(text, flags | Qt::AlignLeft,
                     metrics.elidedText(row.title, Qt::ElideRight, room, Qt::TextSingleLine));
    painter.setPen(isHighlighted ? normal : textColor(disabledShare));
    painter.drawText(text, flags | Qt::AlignRight, shortcut);
}

void MenuWindow::paintStrip(QPainter& painter, const QRect& strip, bool pointsUp) const {
    if (strip.isEmpty())
        return;
    painter.fillRect(strip, QGuiApplication::palette().color(QPalette::Window));
    const QPointF middle = QRectF(strip).center();
    const qreal tip = pointsUp ? -arrowSize : arrowSize;
    painter.setPen(Qt::NoPen);
    painter.setBrush(textColor(disabledShare));
    painter.drawPolygon(QPolygonF{middle + QPointF(-2 * arrowSize, -tip),
                                  middle + QPointF(2 * arrowSize, -tip), middle + QPointF(0, tip)});
}

}  // namespace tidemark
