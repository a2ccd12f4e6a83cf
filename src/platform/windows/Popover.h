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

/// A frameless window beside the panel, on the screen of the click, with the keyboard focus. A click outside
/// of it and the loss of the focus close it. Our windows that are transient for it, such as a tool tip, count
/// as parts of it.
///
/// Where it cannot be placed (on Wayland, or without a click) it is an ordinary small window with a frame.
/// This one stays open when it loses the focus; its close button or toggle() closes it.
///
/// `shown` and `closed` are emitted from the event loop, so their slots may do anything, including destroying
/// the popover. Event handlers of its window must destroy it with deleteLater().
class Popover final : public QObject {
    Q_OBJECT

public:
    /// Makes the window with its content: without a parent, hidden, and with its intended size. The popover
    /// sets its flags and its place. It may be closed like any window.
    using MakeWindow = std::function<std::unique_ptr<QWindow>()>;

    /// The window is created on first use and destroyed `lifetimeWhenClosed` after it was closed.
    explicit Popover(MakeWindow makeWindow,
                     std::chrono::milliseconds lifetimeWhenClosed = std::chrono::seconds(30),
                     QObject* parent = nullptr);
    ~Popover() override;

    [[nodiscard]] bool isShown() const { return m_form != Form::closed; }

    /// Opens the popover for a click on the panel, or closes it when it is open in either form. Does nothing
    /// if this is the click that has just closed it. `place` is the click's position as the panel reports it,
    /// in Qt's global coordinates. Some panels report it wrongly, see choosePopoverAnchor().
    void toggle(QPoint place);
    /// Opens it as an ordinary window, or brings it to the front if it is open.
    void showAsWindow();
    void close();
    /// Resizes and moves the window in one step, because at a bottom panel it grows upwards. If the content
    /// resizes its window itself, the window is moved a moment later. Does nothing while there is no window.
    void resize(QSize size);

Q_SIGNALS:
    /// Emitted synchronously, before the window is created or its size is read.
    void aboutToShow();
    void shown();
    void closed();
    /// The closed window has been destroyed. Emitted from the event loop, too.
    void dropped();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum class Form : quint8 { closed, anchored, ordinary };

    /// Emits aboutToShow() and creates the window unless there is one.
    void prepareWindow();
    /// The likely position of the click and the panel there.
    [[nodiscard]] PopoverAnchor anchorFor(QPoint reported) const;
    void showAt(const PopoverAnchor& anchor);
    void show(Form form);
    void hide();
    void closeAnchored();
    /// Closes it because of a click after which the panel may call toggle().
    void closeByClick();
    void endClick();

    [[nodiscard]] QRect geometryFor(QSize size) const;
    /// Moves the window to the place that fits its current size.
    void place();
    /// Whether this is the popover's window or one that is transient for it.
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
    /// Set on X11 while the popover is open at a panel.
    std::unique_ptr<XServer> m_server;
    /// Set on X11 while the popover is open at a panel, and until the click that closed it is over.
    std::unique_ptr<PointerPresses> m_presses;
    /// Whether the next toggle() may come from the click that has closed the popover.
    bool m_isClosingClick = false;
    QTimer m_clickTimer;
    QTimer m_lifetime;
};

}  // namespace tidemark
