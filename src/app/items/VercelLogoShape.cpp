#include "app/items/VercelLogoShape.h"

#include <QPainterPath>
#include <algorithm>

namespace tidemark {

namespace {

// The space that the shape was designed in.
constexpr double designWidth = 896;
constexpr double designHeight = 800;

QPainterPath triangle(double side) {
    const double scale = std::min(side / designHeight, side / designWidth);
    const double width = designWidth * scale;
    const double height = designHeight * scale;
    const double left = (side - width) / 2;
    const double top = (side - height) / 2;
    QPainterPath path(QPointF(left + width / 2, top));
    path.lineTo(left + width, top + height);
    path.lineTo(left, top + height);
    path.closeSubpath();
    return path;
}

}  // namespace

StatusImage VercelLogoShape::image(double size) {
    return {.size = QSizeF(size, size), .isTemplate = true, .draw = [size](QPainter& painter) {
                painter.setRenderHint(QPainter::Antialiasing);
                painter.fillPath(triangle(size), Qt::black);
            }};
}

}  // namespace tidemark
