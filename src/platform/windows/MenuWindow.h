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

/// A menu in a window of our own, for a panel that leaves it to the item to show its menu. It is drawn with
/// the application's palette and font, without widgets and without Qt Quick: it costs nothing that the
/// program does not load anyway.
///
/// It grabs the pointer and the keyboard while it is open. A click outside of it, Escape and the loss of the
/// focus close it, as choosing an entry does. Like any window it can be closed with close(), and closing the
/// last one quits an application that did not switch that off (QGuiApplication::quitOnLastWindowClosed).
/// Destroying it closes it without closed(); a slot of closed() leaves that to deleteLater(). It is made for
/// X11, XWayland included: a Wayland client can place no window of its own.
class MenuWindow final : public QRasterWindow {
    Q_OBJECT

public:
    MenuWindow();

    /// Opens the menu with a corner at `place`, in Qt's global coordinates: downwards, or upwards where there
    /// is no room below, always within the screen and beside its panels, also beside `panel` if there is one
    /// at that place: Qt does not know of panels when there are several screens. Titles are those of this
    /// moment (MenuItem::titleNow). A menu that is open already closes first, without closed(). A menu
    /// without entries is not shown.
    ///
    /// May be called while the button of the click is still down: its release chooses an entry only after the
    /// pointer was dragged there.
    void popup(const Menu& menu, QPoint place, const QRect& panel = {});
    /// Changes the menu in place while it is open, and is ignored while it is not. The window keeps its
    /// corner and never gets narrower, and the entry under the pointer stays the highlighted one wherever it
    /// is now. A click that was begun before an entry moved chooses nothing. A menu that has lost all entries
    /// closes.
    void setMenu(const Menu& menu);
    [[nodiscard]] bool isOpen() const { return m_isOpen; }

Q_SIGNALS:
    /// The menu went, for whatever reason. When an entry was chosen, its action runs after this, from the
    /// event loop, unless the window was destroyed meanwhile.
    void closed();

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
    /// What the release of a button would do.
    enum class Click : quint8 {
        /// It belongs to the click that opened the menu, until it is dragged.
        opening,
        /// It chooses the entry below it.
        armed,
        /// Nothing: it was over already, or an entry moved under it.
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
    /// The strips in which rows scroll by; empty where there is nothing more in that direction.
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
    /// How far the rows are scrolled up, and how high all of them are.
    int m_offset = 0;
    int m_contentHeight = 0;
    QPoint m_corner;
    /// Where the menu may be.
    QRect m_room;
    bool m_opensUpward = false;
    bool m_isOpen = false;
    Click m_click = Click::opening;
    /// Where the pointer was last, in global coordinates, and whether another entry came to lie there since.
    QPoint m_pointer;
    bool m_isShifted = false;
    QBasicTimer m_grabTimer;
    QBasicTimer m_scrollTimer;
};

}  // namespace tidemark
