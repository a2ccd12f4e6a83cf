#pragma once

#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QScreen>
#include <QSize>
#include <QTimer>
#include <QWindow>
#include <chrono>
#include <functional>
#include <memory>

#include "platform/windows/PopoverPlacement.h"

namespace tidemark {

class PointerPresses;
class XServer;

/// A window at the panel's item: frameless, on the screen of the click, beside the panel, with the keyboard's
/// focus. A click outside of it and the loss of the focus close it. A window of ours that is transient for
/// it, as a tool tip is, belongs to it.
///
/// Where there is no place to stand at (on Wayland, or when nobody clicked) it is an ordinary small window:
/// with a frame, staying when the focus goes, closed by its button or by toggling.
///
/// `shown` and `closed` come from the event loop, so that their slots may do anything, destroying the popover
/// included. Its content, in an event of its window, must leave that to deleteLater().
class Popover final : public QObject {
    Q_OBJECT

public:
    /// Makes the window with what is shown in it: without a parent, hidden, of the size that it shall have.
    /// Its flags and place are the popover's. It may be closed like any window.
    using MakeWindow = std::function<std::unique_ptr<QWindow>()>;

    /// The window is made when it is first shown, and dropped `lifetimeWhenClosed` after it was closed.
    explicit Popover(MakeWindow makeWindow,
                     std::chrono::milliseconds lifetimeWhenClosed = std::chrono::seconds(30),
                     QObject* parent = nullptr);
    ~Popover() override;

    [[nodiscard]] bool isShown() const { return m_form != Form::closed; }

    /// Opens the popover at a click on the panel that was reported to be at `place` (in Qt's global
    /// coordinates; panels lie, see findPopoverAnchor()), or closes it when it is open in either form. Does
    /// nothing when this is the click that has just closed it.
    void toggle(QPoint place);
    /// Opens it as an ordinary window, or brings the open one to the front.
    void showAsWindow();
    void close();
    /// Gives the window a new size and the place that goes with it in one step: at a bottom panel it grows
    /// upwards. Content that resizes its window itself gets the place a moment later. Ignored while there is
    /// no window.
    void resize(QSize size);

Q_SIGNALS:
    /// Comes at once, before the window is made or its size is asked for.
    void aboutToShow();
    void shown();
    void closed();
    /// The window was dropped some time after it was closed. Comes from the event loop, too.
    void dropped();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum class Form : quint8 { closed, anchored, ordinary };

    /// Has the content made ready, and the window made unless there is one.
    void prepareWindow();
    /// Where the click was, as far as that can be told, and the panel there.
    [[nodiscard]] PopoverAnchor anchorFor(QPoint reported) const;
    void showAt(const PopoverAnchor& anchor);
    void show(Form form);
    void hide();
    void closeAnchored();
    /// Closes it because of a click that may, at once or later, also call for toggle().
    void closeByClick();
    void endClick();

    [[nodiscard]] QRect geometryFor(QSize size) const;
    /// Puts the window where it belongs with the size that it has now.
    void place();
    /// Whether it is the popover's window or transient for it.
    [[nodiscard]] bool isOurs(const QWindow* window) const;
    [[nodiscard]] bool isPointerInside() const;
    void handlePress();
    void handleRelease();
    void handleFocus(const QWindow* window);

    MakeWindow m_makeWindow;
    std::unique_ptr<QWindow> m_window;
    Form m_form = Form::closed;
    PopoverAnchor m_anchor;
    QPointer<QScreen> m_screen;
    bool m_hadFocus = false;
    /// On X11, while the popover is open at a panel.
    std::unique_ptr<XServer> m_server;
    /// While the popover is open at a panel, and until the click that closed it is over.
    std::unique_ptr<PointerPresses> m_presses;
    /// Whether the next toggle() may come from the click that has closed the popover.
    bool m_isClosingClick = false;
    QTimer m_clickTimer;
    QTimer m_lifetime;
};

}  // namespace tidemark
