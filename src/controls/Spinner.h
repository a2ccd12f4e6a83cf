#pragma once

#include <qqmlintegration.h>

#include <QBasicTimer>
#include <QColor>

#include "controls/PaintedItem.h"

namespace tidemark {

/// An operation of unknown duration is running: twelve spokes, the brightest of which goes round once a
/// second while the item is visible.
class Spinner : public tidemark::PaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged FINAL)

public:
    using PaintedItem::PaintedItem;

    [[nodiscard]] QColor color() const { return m_color; }
    void setColor(const QColor& color);

    void paint(QPainter& painter) const override;

Q_SIGNALS:
    void colorChanged();

protected:
    void itemChange(ItemChange change, const ItemChangeData& value) override;
    void timerEvent(QTimerEvent* event) override;

private:
    QColor m_color = Qt::white;
    QBasicTimer m_timer;
    int m_step = 0;
};

}  // namespace tidemark
