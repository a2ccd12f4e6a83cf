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

/// A connection of our own to the X server, for what Qt does not ask of it. UI thread only; a question waits
/// for its answer. Places are in Qt's global coordinates.
class XServer {
public:
    /// Nothing anywhere but on X11, XWayland included.
    [[nodiscard]] static std::unique_ptr<XServer> connect();

    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;
    ~XServer();

    [[nodiscard]] xcb_connection_t* connection() const { return m_connection; }
    [[nodiscard]] uint32_t root() const { return m_root; }

    /// The window that owns a selection; none (0) when nobody does.
    [[nodiscard]] uint32_t ownerOf(const char* selection) const;
    /// The bytes of a window's property, 256 KB of it at most; empty when it is not there.
    [[nodiscard]] QByteArray property(uint32_t window, const char* name) const;

    /// Whether it only shows its windows on a Wayland compositor: then it knows nothing of what the pointer
    /// does over the windows of others, panels for instance.
    [[nodiscard]] bool isXWayland() const;
    /// The panel at that place, empty when there is none or when it is no window of its own.
    [[nodiscard]] QRect panelAt(QPoint place) const;
    /// Whether the pointer is over one of these windows and over nothing that covers them.
    [[nodiscard]] bool isPointerOver(const QList<WId>& windows) const;
    /// Gives the focus to a window that is shown already, as the user's own wish of this moment. Qt asks for
    /// it with the time of the last event that it has got itself, and a window manager refuses that when the
    /// user has since done something elsewhere, such as clicking on a panel.
    void activate(WId window) const;
    /// Moves a window and leaves its size alone. Qt gives both, with the size that it was last told, and so
    /// takes back a change of size that is under way.
    void move(WId window, QPoint place) const;

private:
    explicit XServer(xcb_connection_t* connection);

    /// The atom of that name; none unless somebody uses it.
    [[nodiscard]] uint32_t atom(const char* name) const;
    [[nodiscard]] bool isDock(uint32_t window) const;
    /// The server's time of now. Drops events that are waiting on this connection.
    [[nodiscard]] uint32_t time() const;

    xcb_connection_t* m_connection;
    uint32_t m_root;
};

}  // namespace tidemark
