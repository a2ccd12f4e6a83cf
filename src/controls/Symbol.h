#pragma once

#include <qqmlintegration.h>

#include <QColor>
#include <QString>

#include "controls/PaintedItem.h"

namespace tidemark {

/// A symbol by its name ("chevron.up"), in one colour, drawn for text of a size: it takes
/// a square box that is somewhat higher than the letters. An unknown name draws nothing.
class Symbol : public tidemark::PaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged FINAL)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged FINAL)
    /// The size of the text it stands with, in logical pixels.
    Q_PROPERTY(qreal fontSize READ fontSize WRITE setFontSize NOTIFY fontSizeChanged FINAL)

public:
    using PaintedItem::PaintedItem;

    [[nodiscard]] QString name() const { return m_name; }
    void setName(const QString& name);
    [[nodiscard]] QColor color() const { return m_color; }
    void setColor(const QColor& color);
    [[nodiscard]] qreal fontSize() const { return m_fontSize; }
    void setFontSize(qreal size);

    void paint(QPainter& painter) const override;

Q_SIGNALS:
    void nameChanged();
    void colorChanged();
    void fontSizeChanged();

private:
    QString m_name;
    QColor m_color = Qt::white;
    qreal m_fontSize = 0;
};

}  // namespace tidemark
