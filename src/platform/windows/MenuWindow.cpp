#include "platform/windows/MenuWindow.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMetaObject>
#include <QMouseEvent>
#include <QScreen>
#include <QStyleHints>
#include <QTimerEvent>
#include <QWheelEvent>
#include <algorithm>

#include "platform/base/Characters.h"
#include "platform/windows/MenuWindowLook.h"
#include "platform/windows/PopoverPlacement.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

using menulook::fontOf;
using menulook::menuPadding;
using menulook::rowPadding;
using menulook::shortcutGap;
using menulook::shortcutOf;

constexpr int separatorHeight = 9;
/// Relative to the screen's width.
constexpr double widestRow = 0.5;
/// In average characters.
constexpr int narrowestTitle = 16;
constexpr int stripHeight = 16;
/// In milliseconds.
constexpr int grabInterval = 50;
constexpr int scrollInterval = 40;

int widthOf(const MenuItem& item, const QString& title, int widest) {
    const QFontMetrics metrics(fontOf(item));
    const QString shortcut = shortcutOf(item);
    const int average = metrics.averageCharWidth();
    return std::clamp(metrics.size(Qt::TextSingleLine, title).width(), narrowestTitle * average,
                      std::max(widest, narrowestTitle * average)) +
           (shortcut.isEmpty() ? 0 : shortcutGap + metrics.horizontalAdvance(shortcut)) + rowPadding.left() +
           rowPadding.right();
}

}  // namespace

MenuWindow::MenuWindow() {
    setFlags(Qt::Popup | Qt::FramelessWindowHint);
}

void MenuWindow::popup(const Menu& menu, QPoint place, const QRect& panel) {
    m_isOpen = false;
    hide();
    m_rows = rowsOf(menu);
    QScreen* const screen = QGuiApplication::screenAt(place);
    setScreen(screen ? screen : QGuiApplication::primaryScreen());
    if (m_rows.isEmpty())
        return;
    m_current = -1;
    m_offset = 0;
    m_corner = place;
    m_room = roomBesidePanel(
        {.place = place, .panel = panel},
        {.geometry = this->screen()->geometry(), .available = this->screen()->availableGeometry()});
    m_click = Click::opening;
    m_pointer = place;
    m_isShifted = false;
    layOut();
    m_isOpen = true;
    show();
    grab();
}

void MenuWindow::setMenu(const Menu& menu) {
    if (!m_isOpen)
        return;
    const QString pointed = identifierOf(rowAt(mapFromGlobal(m_pointer)));
    const QString current = identifierOf(m_current);
    m_rows = rowsOf(menu);
    if (m_rows.isEmpty()) {
        close();
        return;
    }
    const int index = indexOf(current);
    m_current = canChoose(index) ? index : -1;
    layOut();
    if (identifierOf(rowAt(mapFromGlobal(m_pointer))) != pointed) {
        m_isShifted = true;
        m_click = Click::spent;
    }
    update();
}

/// Omits separators at the ends and repeated ones.
QList<MenuWindow::Row> MenuWindow::rowsOf(const Menu& menu) {
    QList<Row> rows;
    for (const MenuItem& item : menu)
        if (!item.isSeparator || (!rows.isEmpty() && !rows.constLast().item.isSeparator))
            rows.append({.item = item, .title = item.isSeparator ? QString() : singleLine(item.titleNow())});
    if (!rows.isEmpty() && rows.constLast().item.isSeparator)
        rows.removeLast();
    return rows;
}

int MenuWindow::indexOf(const QString& identifier) const {
    const auto found = std::find_if(m_rows.cbegin(), m_rows.cend(), [&identifier](const Row& row) {
        return row.item.identifier == identifier;
    });
    return found == m_rows.cend() ? -1 : static_cast<int>(found - m_rows.cbegin());
}

bool MenuWindow::canChoose(int index) const {
    return index >= 0 && index < m_rows.size() && !m_rows.at(index).item.isSeparator &&
           m_rows.at(index).item.isEnabled();
}

int MenuWindow::rowAt(QPoint place) const {
    if (!QRect(QPoint(), size()).contains(place) || stripAbove().contains(place) ||
        stripBelow().contains(place)) {
        return -1;
    }
    const int y = place.y() + m_offset;
    const auto found = std::find_if(m_rows.cbegin(), m_rows.cend(),
                                    [y](const Row& row) { return y >= row.top && y < row.top + row.height; });
    return found == m_rows.cend() ? -1 : static_cast<int>(found - m_rows.cbegin());
}

int MenuWindow::choosableAt(QPoint place) const {
    const int index = rowAt(place);
    return canChoose(index) ? index : -1;
}

QString MenuWindow::identifierOf(int index) const {
    return index < 0 ? QString() : m_rows.at(index).item.identifier;
}

QRect MenuWindow::stripAbove() const {
    return m_offset > 0 ? QRect(0, 0, width(), stripHeight) : QRect();
}

QRect MenuWindow::stripBelow() const {
    return m_offset + height() < m_contentHeight ? QRect(0, height() - stripHeight, width(), stripHeight)
                                                 : QRect();
}

void MenuWindow::layOut() {
    int y = menuPadding;
    const int limit = static_cast<int>(m_room.width() * widestRow);
    int widest = 0;
    for (Row& row : m_rows) {
        row.top = y;
        row.height = row.item.isSeparator
                         ? separatorHeight
                         : QFontMetrics(fontOf(row.item)).height() + rowPadding.top() + rowPadding.bottom();
        y += row.height;
        widest = std::max(widest, widthOf(row.item, row.title, limit));
    }
    m_contentHeight = y + menuPadding;
    widest += 2 * menuPadding;
    place(QSize(m_isOpen ? std::max(widest, width()) : widest, m_contentHeight));
    scrollTo(m_offset);
}

/// An open menu keeps its direction. It moves only as far as it has to in order to stay on the screen.
void MenuWindow::place(QSize size) {
    size = size.boundedTo(m_room.size());
    const int below = m_room.y() + m_room.height() - m_corner.y();
    const int above = m_corner.y() - m_room.y();
    if (!m_isOpen)
        m_opensUpward = size.height() > below && above > below;
    const QPoint wanted(m_corner.x(), m_opensUpward ? m_corner.y() - size.height() : m_corner.y());
    const QPoint last(m_room.x() + m_room.width() - size.width(),
                      m_room.y() + m_room.height() - size.height());
    setGeometry(QRect(
        QPoint(std::clamp(wanted.x(), m_room.x(), last.x()), std::clamp(wanted.y(), m_room.y(), last.y())),
        size));
}

/// Only X11 lets a window grab pointer and keyboard, and only when the panel has released its own grab of the
/// pointer.
void MenuWindow::grab() {
    if (QGuiApplication::platformName() != u"xcb"_s ||
        (setMouseGrabEnabled(true) && setKeyboardGrabEnabled(true))) {
        m_grabTimer.stop();
    } else {
        m_grabTimer.start(grabInterval, Qt::CoarseTimer, this);
    }
}

bool MenuWindow::event(QEvent* event) {
    const bool isPainting = event->type() == QEvent::UpdateRequest || event->type() == QEvent::Paint;
    if (isPainting && !m_isOpen) {
        // An update from before the menu was closed. The window has no surface any more.
        return true;
    }
    if (event->type() == QEvent::Leave)
        highlight(-1);
    return QRasterWindow::event(event);
}

void MenuWindow::mousePressEvent(QMouseEvent* event) {
    const QPoint place = event->position().toPoint();
    if (!QRect(QPoint(), size()).contains(place)) {
        close();
        return;
    }
    m_click = m_isShifted ? Click::spent : Click::armed;
    m_isShifted = false;
    m_pointer = event->globalPosition().toPoint();
    highlight(choosableAt(place));
}

void MenuWindow::mouseMoveEvent(QMouseEvent* event) {
    const QPoint pointer = event->globalPosition().toPoint();
    // An opening or moving window gets such an event for a resting pointer, too.
    if (pointer == m_pointer)
        return;
    m_pointer = pointer;
    m_isShifted = false;
    if (m_click == Click::opening && event->buttons() != Qt::NoButton &&
        (pointer - m_corner).manhattanLength() >= QGuiApplication::styleHints()->startDragDistance()) {
        m_click = Click::armed;
    }
    const QPoint place = event->position().toPoint();
    highlight(choosableAt(place));
    if (stripAbove().contains(place) || stripBelow().contains(place))
        m_scrollTimer.start(scrollInterval, Qt::CoarseTimer, this);
    else
        m_scrollTimer.stop();
}

void MenuWindow::mouseReleaseEvent(QMouseEvent* event) {
    if (m_click == Click::armed)
        choose(choosableAt(event->position().toPoint()));
    m_click = Click::spent;
}

void MenuWindow::wheelEvent(QWheelEvent* event) {
    constexpr int notch = 120;
    scrollTo(m_offset -
             (event->angleDelta().y() * 3 * QFontMetrics(QGuiApplication::font()).height() / notch));
    highlight(choosableAt(event->position().toPoint()));
}

void MenuWindow::keyPressEvent(QKeyEvent* event) {
    const int count = static_cast<int>(m_rows.size());
    switch (event->key()) {
        case Qt::Key_Escape:
            close();
            return;
        case Qt::Key_Up:
            step(m_current < 0 ? count : m_current, -1);
            return;
        case Qt::Key_Down:
            step(m_current, 1);
            return;
        case Qt::Key_Home:
            step(-1, 1);
            return;
        case Qt::Key_End:
            step(count, -1);
            return;
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Space:
            choose(m_current);
            return;
        default:
            break;
    }
    if (event->modifiers() != Qt::ControlModifier)
        return;
    for (int index = 0; index < count; ++index) {
        const QChar letter = m_rows.at(index).item.keyEquivalent.toUpper();
        if (!letter.isNull() && letter.unicode() == event->key() && canChoose(index)) {
            choose(index);
            return;
        }
    }
}

void MenuWindow::focusOutEvent(QFocusEvent* /*event*/) {
    close();
}

void MenuWindow::hideEvent(QHideEvent* /*event*/) {
    m_grabTimer.stop();
    m_scrollTimer.stop();
    if (m_isOpen) {
        m_isOpen = false;
        m_rows.clear();
        m_current = -1;
    }
}

void MenuWindow::timerEvent(QTimerEvent* event) {
    if (event->timerId() == m_grabTimer.timerId()) {
        grab();
    } else if (event->timerId() == m_scrollTimer.timerId()) {
        const QPoint place = mapFromGlobal(m_pointer);
        if (stripAbove().contains(place))
            scrollTo(m_offset - (2 * stripHeight));
        else if (stripBelow().contains(place))
            scrollTo(m_offset + (2 * stripHeight));
        else
            m_scrollTimer.stop();
    } else {
        QRasterWindow::timerEvent(event);
    }
}

void MenuWindow::highlight(int index) {
    if (index != m_current) {
        m_current = index;
        update();
    }
}

/// Highlights the next entry that can be chosen, wrapping around at the ends.
void MenuWindow::step(int from, int direction) {
    const int count = static_cast<int>(m_rows.size());
    int index = from;
    for (int tried = 0; tried < count; ++tried) {
        index = (index + direction + count) % count;
        if (canChoose(index)) {
            highlight(index);
            scrollIntoView(index);
            return;
        }
    }
}

void MenuWindow::scrollTo(int offset) {
    m_offset = std::clamp(offset, 0, std::max(0, m_contentHeight - height()));
    update();
}

void MenuWindow::scrollIntoView(int index) {
    const Row& row = m_rows.at(index);
    const int highest = row.top - stripHeight;
    const int lowest = row.top + row.height + stripHeight - height();
    scrollTo(std::max(std::min(m_offset, highest), lowest));
}

void MenuWindow::choose(int index) {
    if (!canChoose(index))
        return;
    // Before close(), which clears the rows.
    QMetaObject::invokeMethod(this, m_rows.at(index).item.action, Qt::QueuedConnection);
    close();
}

}  // namespace tidemark
