#pragma once

#include <qqmlintegration.h>

#include <QColor>
#include <QPainterPath>
#include <QRectF>

#include "controls/PaintedItem.h"

namespace tidemark {

/// The outline of a rectangle with continuous corners: the curvature grows from nothing where a corner leaves
/// the edge, so that no joint can be seen. A radius that does not fit is made smaller.
[[nodiscard]] QPainterPath continuousRectangle(const QRectF& rectangle, qreal radius);

/// A rectangle with continuous corners, filled and outlined. The outline lies on the edge, half of it
/// outside.
class ContinuousRectangle : public tidemark::PaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY changed FINAL)
    Q_PROPERTY(QColor strokeColor READ strokeColor WRITE setStrokeColor NOTIFY changed FINAL)
    Q_PROPERTY(qreal strokeWidth READ strokeWidth WRITE setStrokeWidth NOTIFY changed FINAL)
    Q_PROPERTY(qreal radius READ radius WRITE setRadius NOTIFY changed FINAL)

public:
    using PaintedItem::PaintedItem;

    [[nodiscard]] QColor color() const { return m_color; }
    void setColor(const QColor& color) { assign(m_color, color); }
    [[nodiscard]] QColor strokeColor() const { return m_strokeColor; }
    void setStrokeColor(const QColor& color) { assign(m_strokeColor, color); }
    [[nodiscard]] qreal strokeWidth() const { return m_strokeWidth; }
    void setStrokeWidth(qreal width) { assign(m_strokeWidth, width); }
    [[nodiscard]] qreal radius() const { return m_radius; }
    void setRadius(qreal radius) { assign(m_radius, radius); }

    void paint(QPainter& painter) const override;
    [[nodiscard]] QRectF paintedRect() const override;

Q_SIGNALS:
    void changed();

private:
    template <typename T>
    void assign(T& field, const T& value) {
        if (field == value)
            return;
        field = value;
        update();
        Q_EMIT changed();
    }

    QColor m_color = Qt::transparent;
    QColor m_strokeColor = Qt::transparent;
    qreal m_strokeWidth = 0;
    qreal m_radius = 0;
};

}  // namespace tidemark
