#pragma once

#include <qqmlintegration.h>

#include <QBasicTimer>
#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QString>

namespace tidemark {

/// The text that shows when the pointer rests on an item. Its window is a `ViewWindow`.
class ToolTip : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickItem* item READ item WRITE setItem NOTIFY itemChanged FINAL)
    /// Whether the pointer is on the item.
    Q_PROPERTY(bool isHovered READ isHovered WRITE setHovered NOTIFY hoveredChanged FINAL)
    /// Empty for none.
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged FINAL)

public:
    using QObject::QObject;
    ~ToolTip() override;

    [[nodiscard]] QQuickItem* item() const { return m_item; }
    void setItem(QQuickItem* item);
    [[nodiscard]] bool isHovered() const { return m_isHovered; }
    void setHovered(bool isHovered);
    [[nodiscard]] QString text() const { return m_text; }
    void setText(const QString& text);

Q_SIGNALS:
    void itemChanged();
    void hoveredChanged();
    void textChanged();

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    void show();
    void hide();

    QPointer<QQuickItem> m_item;
    QString m_text;
    QBasicTimer m_delay;
    bool m_isHovered = false;
    bool m_isShown = false;
};

}  // namespace tidemark
