#pragma once

#include <QBasicTimer>
#include <QList>
#include <QPainter>
#include <QPoint>
#include <QRasterWindow>
#include <QRect>
#include <QSize>
#include <QString>

#include "platform/windows/Menu.h"

namespace tidemark {

/// A menu in a window of our own, for panels that do not show the item's menu themselves. It is drawn with
/// the application's palette and font. It uses neither widgets nor Qt Quick, so it loads nothing that the
/// program does not load anyway.
///
/// It grabs the pointer and the keyboard while it is open. Choosing an entry, a click outside of it, Escape
/// and the loss of the focus close it. The action of a chosen entry runs after that from the event loop,
/// unless the window is destroyed before. close() closes it like any window; see
/// QGuiApplication::quitOnLastWindowClosed. It is made for X11 and XWayland, because a Wayland client cannot
/// place its windows.
class MenuWindow final : public QRasterWindow {
    Q_OBJECT

public:
    MenuWindow();

    /// Opens the menu with a corner at `place` in Qt's global coordinates, downwards, or upwards where there
    /// is no room below. It stays on the screen and beside its panels. Pass `panel` if there is one at that
    /// place, because Qt does not know panels when there are several screens. Titles are MenuItem::titleNow.
    /// A menu that is open already is closed first. A menu without entries is not shown.
    ///
    /// May be called while the button of the click is still pressed. Its release chooses an entry only after
    /// the pointer was dragged there.
    void popup(const Menu& menu, QPoint place, const QRect& panel = {});
    /// Changes the menu in place while it is open; otherwise does nothing. The window keeps its corner and
    /// never gets narrower. The highlighted entry stays highlighted, even if it moves. A click that began
    /// before an entry moved chooses nothing. A menu without entries is closed.
    void setMenu(const Menu& menu);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    struct Row {
        MenuItem item;
        QString title;
        int top = 0;
        int height = 0;
    };
    /// The effect of the next button release.
    enum class Click : quint8 {
        /// None, because the release belongs to the click that opened the menu. Dragging arms it.
        opening,
        /// Chooses the entry under the pointer.
        armed,
        /// None, because the click is over or an entry moved under the pointer.
        spent
    };

    [[nodiscard]] static QList<Row> rowsOf(const Menu& menu);
    [[nodiscard]] int indexOf(const QString& identifier) const;
    [[nodiscard]] bool canChoose(int index) const;
    /// The row at a place in the window, or -1.
    [[nodiscard]] int rowAt(QPoint place) const;
    /// The same, for rows that can be chosen.
    [[nodiscard]] int choosableAt(QPoint place) const;
    [[nodiscard]] QString identifierOf(int index) const;
    /// The strips that scroll the menu under the pointer; empty where there is nothing to scroll to.
    [[nodiscard]] QRect stripAbove() const;
    [[nodiscard]] QRect stripBelow() const;

    void layOut();
    void place(QSize size);
    void grab();
    void highlight(int index);
    void step(int from, int direction);
    void scrollTo(int offset);
    void scrollIntoView(int index);
    void choose(int index);
    void paintRow(QPainter& painter, const Row& row, bool isHighlighted) const;
    void paintStrip(QPainter& painter, const QRect& strip, bool pointsUp) const;

    QList<Row> m_rows;
    /// The highlighted row, or -1.
    int m_current = -1;
    /// How far the rows are scrolled, and the height of all rows.
    int m_offset = 0;
    int m_contentHeight = 0;
    QPoint m_corner;
    /// The area in which the menu may be placed.
    QRect m_room;
    bool m_opensUpward = false;
    bool m_isOpen = false;
    Click m_click = Click::opening;
    /// The last position of the pointer in global coordinates, and whether another entry has moved there
    /// since.
    QPoint m_pointer;
    bool m_isShifted = false;
    QBasicTimer m_grabTimer;
    QBasicTimer m_scrollTimer;
};

}  // namespace tidemark
