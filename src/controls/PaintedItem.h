#pragma once

#include <qqmlintegration.h>

#include <QPainter>
#include <QQuickItem>

namespace tidemark {

/// An item that paints itself, in the pixels of its screen, straight into the window. It relies on the views
/// being drawn in software. (QQuickPaintedItem paints into a picture of its own, in logical points there,
/// which is blurred or garbled at any scale but 1.)
class PaintedItem : public QQuickItem {
    Q_OBJECT
    QML_ANONYMOUS

public:
    explicit PaintedItem(QQuickItem* parent = nullptr);

    /// Paints within paintedRect(); nothing beyond that shows.
    virtual void paint(QPainter& painter) const = 0;
    /// In the item's coordinates.
    [[nodiscard]] virtual QRectF paintedRect() const { return boundingRect(); }

protected:
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData* data) override;
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
};

}  // namespace tidemark
