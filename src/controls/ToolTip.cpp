#include "controls/ToolTip.h"

#include <QCursor>
#include <QTimerEvent>

#include "controls/ViewWindow.h"

namespace tidemark {

namespace {

/// How long the pointer rests first, in milliseconds.
constexpr int restingTime = 600;

ViewWindow* windowOf(const QQuickItem* item) {
    return item ? qobject_cast<ViewWindow*>(item->window()) : nullptr;
}

}  // namespace

ToolTip::~ToolTip() {
    hide();
}

void ToolTip::setItem(QQuickItem* item) {
    if (item == m_item)
        return;
    m_item = item;
    Q_EMIT itemChanged();
}

void ToolTip::setHovered(bool isHovered) {
    if (isHovered == m_isHovered)
        return;
    m_isHovered = isHovered;
    m_delay.stop();
    // An item without a text leaves the window to the items within it.
    if (m_isHovered && !m_text.isEmpty())
        m_delay.start(restingTime, this);
    else
        hide();
    Q_EMIT hoveredChanged();
}

void ToolTip::setText(const QString& text) {
    if (text == m_text)
        return;
    m_text = text;
    const ViewWindow* window = windowOf(m_item);
    m_isShown = m_isShown && window && window->toolTip().isVisible();
    if (m_isShown)
        show();
    else if (m_isHovered && !m_text.isEmpty() && !m_delay.isActive())
        m_delay.start(restingTime, this);
    Q_EMIT textChanged();
}

void ToolTip::timerEvent(QTimerEvent* event) {
    if (event->timerId() != m_delay.timerId()) {
        QObject::timerEvent(event);
        return;
    }
    m_delay.stop();
    show();
}

void ToolTip::show() {
    if (ViewWindow* window = windowOf(m_item)) {
        window->toolTip().showText(m_text, QCursor::pos(), window);
        m_isShown = true;
    }
}

void ToolTip::hide() {
    ViewWindow* window = windowOf(m_item);
    if (m_isShown && window)
        window->toolTip().hide();
    m_isShown = false;
}

}  // namespace tidemark
