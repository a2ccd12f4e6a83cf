#include "controls/ContinuousRectangle.h"

#include <QPainter>
#include <QPen>
#include <algorithm>
#include <array>
#include <cmath>

namespace tidemark {

namespace {

/// Where there is room, a corner starts at this many radii from the rectangle's own.
constexpr qreal widestReach = 1.528665;
constexpr int pointsPerCorner = 12;
using Corner = std::array<QPointF, pointsPerCorner + 1>;

/// A quarter of the superellipse |x|ⁿ + |y|ⁿ = 1 that cuts off as much of the corner's diagonal as the arc of
/// the radius does: from the horizontal edge to the vertical one, as distances from the corner in units of
/// the reach. A reach of one radius makes it that arc.
Corner cornerOf(qreal reach) {
    // The superellipse's place on the diagonal is 2 ^ (-1/n).
    const qreal exponent = -1 / std::log2(1 - ((1 - M_SQRT1_2) / reach));
    Corner points;
    for (int i = 0; i <= pointsPerCorner; ++i) {
        const qreal angle = M_PI_2 * i / pointsPerCorner;
        points.at(static_cast<size_t>(i)) = {1 - std::pow(std::sin(angle), 2 / exponent),
                                             1 - std::pow(std::cos(angle), 2 / exponent)};
    }
    return points;
}

}  // namespace

QPainterPath continuousRectangle(const QRectF& rectangle, qreal radius) {
    QPainterPath path;
    const qreal half = std::min(rectangle.width(), rectangle.height()) / 2;
    radius = std::min(radius, half);
    if (radius <= 0) {
        path.addRect(rectangle);
        return path;
    }
    const qreal reach = std::clamp(half / radius, 1.0, widestReach);
    const Corner points = cornerOf(reach);
    // Clockwise from the left edge; each corner is mirrored into its place.
    const auto add = [&](QPointF corner, qreal horizontal, qreal vertical, bool reversed) {
        const QPointF scale(radius * reach * horizontal, radius * reach * vertical);
        for (int i = 0; i <= pointsPerCorner; ++i) {
            const QPointF point = points.at(static_cast<size_t>(reversed ? pointsPerCorner - i : i));
            const QPointF place = corner + QPointF(point.x() * scale.x(), point.y() * scale.y());
            path.elementCount() == 0 ? path.moveTo(place) : path.lineTo(place);
        }
    };
    add(rectangle.topLeft(), 1, 1, true);
    add(rectangle.topRight(), -1, 1, false);
    add(rectangle.bottomRight(), -1, -1, true);
    add(rectangle.bottomLeft(), 1, -1, false);
    path.closeSubpath();
    return path;
}

QRectF ContinuousRectangle::paintedRect() const {
    const qreal outside = m_strokeWidth / 2;
    return boundingRect().adjusted(-outside, -outside, outside, outside);
}

void ContinuousRectangle::paint(QPainter& painter) const {
    const QPainterPath path = continuousRectangle(boundingRect(), m_radius);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(path, m_color);
    if (m_strokeWidth > 0)
        painter.strokePath(path, QPen(m_strokeColor, m_strokeWidth));
}

}  // namespace tidemark
