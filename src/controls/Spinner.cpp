#include "controls/Spinner.h"

#include <QPainter>
#include <QTimerEvent>
#include <algorithm>

namespace tidemark {

namespace {

constexpr int spokes = 12;
constexpr int stepInterval = 1000 / spokes;
/// As parts of half the box: where a spoke begins and ends, and how thick it is.
constexpr qreal innerEnd = 0.48;
constexpr qreal outerEnd = 0.88;
constexpr qreal thickness = 0.2;
constexpr float faintest = 0.2F;

}  // namespace

void Spinner::setColor(const QColor& color) {
    if (color == m_color)
        return;
    m_color = color;
    update();
    Q_EMIT colorChanged();
}

void Spinner::paint(QPainter& painter) const {
    const qreal half = std::min(width(), height()) / 2;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(width() / 2, height() / 2);
    painter.rotate(360.0 / spokes * m_step);
    for (int i = 0; i < spokes; ++i) {
        painter.rotate(360.0 / spokes);
        QColor color = m_color;
        const float age = static_cast<float>(spokes - 1 - i) / (spokes - 1);
        color.setAlphaF(m_color.alphaF() * std::max(faintest, 1 - age));
        painter.setPen(QPen(color, half * thickness, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(0, -half * innerEnd), QPointF(0, -half * outerEnd));
    }
}

void Spinner::itemChange(ItemChange change, const ItemChangeData& value) {
    if (change == ItemVisibleHasChanged || change == ItemSceneChange) {
        if (isVisible() && (change == ItemVisibleHasChanged ? window() != nullptr : value.window != nullptr))
            m_timer.start(stepInterval, this);
        else
            m_timer.stop();
    }
    PaintedItem::itemChange(change, value);
}

void Spinner::timerEvent(QTimerEvent* event) {
    if (event->timerId() != m_timer.timerId()) {
        PaintedItem::timerEvent(event);
        return;
    }
    m_step = (m_step + 1) % spokes;
    update();
}

}  // namespace tidemark
