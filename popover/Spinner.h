#pragma once

#include <qqmlintegration.h>
#include <QBasicTimer>
#include <QColor>
#include <QQuickPaintedItem>

namespace tidemark {

/// Twelve spokes of which the brightest goes round once a second, while it is visible.
class Spinner : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged FINAL)

public:
    explicit Spinner(QQuickItem* parent = nullptr);

    [[nodiscard]] QColor color() const { return m_color; }
    void setColor(const QColor& color);

    void paint(QPainter* painter) override;

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
