#pragma once

#include <QByteArray>
#include <QList>
#include <QPoint>
#include <QRect>
#include <QWindow>
#include <cstdint>
#include <memory>

struct xcb_connection_t;

namespace tidemark {

/// A connection of our own to the X server, for requests that Qt has no functions for. UI thread only; calls
/// that return a value block for the server's answer. Points and rectangles are in Qt's global coordinates.
class XServer {
public:
    /// Null except on X11 and XWayland.
    [[nodiscard]] static std::unique_ptr<XServer> connect();

    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;
    ~XServer();

    [[nodiscard]] xcb_connection_t* connection() const { return m_connection; }
    [[nodiscard]] uint32_t root() const { return m_root; }

    /// The window that owns a selection; 0 when there is none.
    [[nodiscard]] uint32_t ownerOf(const char* selection) const;
    /// The first 256 KB of a window's property; empty when it does not exist.
    [[nodiscard]] QByteArray property(uint32_t window, const char* name) const;

    /// Whether this is XWayland. It does not know where the pointer is while that is over a Wayland window,
    /// for example a panel.
    [[nodiscard]] bool isXWayland() const;
    /// The panel at that place; empty when there is no window of a panel.
    [[nodiscard]] QRect panelAt(QPoint place) const;
    /// Whether the pointer is over one of these windows where no other window covers it.
    [[nodiscard]] bool isPointerOver(const QList<WId>& windows) const;
    /// Gives the focus to a window that is shown already, as a request by the user at this time. Qt sends the
    /// time of the last event that it received, and window managers refuse the request when the user has used
    /// another window, such as the panel, since then.
    void activate(WId window) const;
    /// Moves a window without resizing it. Qt always sends a size too, namely the last one that it knows, and
    /// so undoes a resize that is in progress.
    void move(WId window, QPoint place) const;

private:
    explicit XServer(xcb_connection_t* connection);

    /// The atom of that name; 0 unless some client has created it.
    [[nodiscard]] uint32_t atom(const char* name) const;
    [[nodiscard]] bool isDock(uint32_t window) const;
    /// The server's current time. Discards events that wait on this connection.
    [[nodiscard]] uint32_t time() const;

    xcb_connection_t* m_connection;
    uint32_t m_root;
};

}  // namespace tidemark
