#include "controls/PaintedItem.h"

#include <QQuickWindow>
#include <QSGRenderNode>
#include <QSGRendererInterface>

namespace tidemark {

namespace {

/// Views drawn in software are drawn on the user interface's thread: the item can be asked while it is drawn.
class PaintNode final : public QSGRenderNode {
public:
    explicit PaintNode(const PaintedItem& item) : m_item(item) {}

    void render(const RenderState* state) override {
        const QQuickWindow* window = m_item.window();
        const QSGRendererInterface* renderer = window->rendererInterface();
        auto* painter = static_cast<QPainter*>(
            renderer->getResource(const_cast<QQuickWindow*>(window), QSGRendererInterface::PainterResource));
        const QRectF visible = visibleRect();
        if (!painter || visible.isEmpty())
            return;
        const QRegion* clip = state->clipRegion();
        if (clip && !clip->isEmpty())
            painter->setClipRegion(*clip, Qt::ReplaceClip);
        painter->setTransform({});
        painter->setClipRect(visible, Qt::IntersectClip);
        painter->setTransform(matrix()->toTransform());
        painter->setOpacity(inheritedOpacity());
        m_item.paint(*painter);
    }

    [[nodiscard]] StateFlags changedStates() const override { return {}; }
    [[nodiscard]] RenderingFlags flags() const override { return BoundedRectRendering; }
    [[nodiscard]] QRectF rect() const override { return m_item.paintedRect(); }

private:
    /// What the items around it leave of it, in the window. (Of their clips Qt tells only those that are no
    /// plain rectangles.)
    [[nodiscard]] QRectF visibleRect() const {
        QRectF visible = m_item.mapRectToScene(rect());
        for (const QQuickItem* item = m_item.parentItem(); item; item = item->parentItem())
            if (item->clip())
                visible &= item->mapRectToScene(item->clipRect());
        return visible;
    }

    const PaintedItem& m_item;
};

}  // namespace

PaintedItem::PaintedItem(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
}

QSGNode* PaintedItem::updatePaintNode(QSGNode* old, UpdatePaintNodeData* /*data*/) {
    QSGNode* node = old ? old : new PaintNode(*this);
    node->markDirty(QSGNode::DirtyMaterial);
    return node;
}

void PaintedItem::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size())
        update();
}

}  // namespace tidemark
