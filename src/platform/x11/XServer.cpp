#include "platform/x11/XServer.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace tidemark {
namespace {

template <typename Answer>
std::unique_ptr<Answer, decltype(&std::free)> owned(Answer* answer) {
    return {answer, &std::free};
}

/// The screen's area in the server's pixels. Qt uses the same coordinates for its upper left corner.
QRect pixelsOf(const QScreen& screen) {
    return {screen.geometry().topLeft(),
            (QSizeF(screen.geometry().size()) * screen.devicePixelRatio()).toSize()};
}

QPoint toPixels(QPoint place) {
    const QScreen* screen = QGuiApplication::screenAt(place);
    if (screen == nullptr)
        return place;
    const QPoint origin = screen->geometry().topLeft();
    return origin + (QPointF(place - origin) * screen->devicePixelRatio()).toPoint();
}

QRect fromPixels(const QRect& area) {
    const QList<QScreen*> screens = QGuiApplication::screens();
    const auto screen = std::find_if(screens.begin(), screens.end(), [&](const QScreen* candidate) {
        return pixelsOf(*candidate).contains(area.center());
    });
    if (screen == screens.end())
        return area;
    const QPoint origin = (*screen)->geometry().topLeft();
    const qreal scale = (*screen)->devicePixelRatio();
    return QRectF(origin + (QPointF(area.topLeft() - origin) / scale), QSizeF(area.size()) / scale)
        .toAlignedRect();
}

}  // namespace

std::unique_ptr<XServer> XServer::connect() {
    const bool isX11 = qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr &&
                       QGuiApplication::platformName() == u"xcb";
    xcb_connection_t* connection = isX11 ? xcb_connect(nullptr, nullptr) : nullptr;
    if (connection != nullptr && xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        connection = nullptr;
    }
    return std::unique_ptr<XServer>(connection == nullptr ? nullptr : new XServer(connection));
}

XServer::XServer(xcb_connection_t* connection)
    : m_connection(connection), m_root(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root) {}

XServer::~XServer() {
    xcb_disconnect(m_connection);
}

uint32_t XServer::ownerOf(const char* selection) const {
    const auto cookie = xcb_get_selection_owner(m_connection, atom(selection));
    const auto answer = owned(xcb_get_selection_owner_reply(m_connection, cookie, nullptr));
    return answer ? answer->owner : xcb_window_t{XCB_WINDOW_NONE};
}

QByteArray XServer::property(uint32_t window, const char* name) const {
    constexpr uint32_t words = 64 * 1024;
    const auto cookie =
        xcb_get_property(m_connection, 0, window, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, words);
    const auto answer = owned(xcb_get_property_reply(m_connection, cookie, nullptr));
    if (!answer)
        return {};
    return {static_cast<const char*>(xcb_get_property_value(answer.get())),
            xcb_get_property_value_length(answer.get())};
}

bool XServer::isXWayland() const {
    constexpr std::string_view extension = "XWAYLAND";
    const auto cookie = xcb_query_extension(m_connection, extension.size(), extension.data());
    const auto answer = owned(xcb_query_extension_reply(m_connection, cookie, nullptr));
    // Older versions lack the extension, but their outputs have this name.
    return (answer && answer->present != 0) ||
           QGuiApplication::primaryScreen()->name().startsWith(QLatin1String("XWAYLAND"));
}

QRect XServer::panelAt(QPoint place) const {
    const QPoint pixel = toPixels(place);
    QRect panel;
    // Descends the window tree, because a window manager may have reparented the panel.
    for (xcb_window_t window = m_root; window != XCB_NONE;) {
        if (window != m_root && isDock(window)) {
            const auto sizeCookie = xcb_get_geometry(m_connection, window);
            const auto placeCookie = xcb_translate_coordinates(m_connection, window, m_root, 0, 0);
            const auto size = owned(xcb_get_geometry_reply(m_connection, sizeCookie, nullptr));
            const auto corner = owned(xcb_translate_coordinates_reply(m_connection, placeCookie, nullptr));
            if (size && corner)
                panel = fromPixels({corner->dst_x, corner->dst_y, size->width, size->height});
            break;
        }
        const auto cookie = xcb_translate_coordinates(
            m_connection, m_root, window, static_cast<int16_t>(pixel.x()), static_cast<int16_t>(pixel.y()));
        const auto answer = owned(xcb_translate_coordinates_reply(m_connection, cookie, nullptr));
        window = answer ? answer->child : XCB_NONE;
    }
    return panel;
}

bool XServer::isPointerOver(const QList<WId>& windows) const {
    for (xcb_window_t window = m_root; window != XCB_NONE;) {
        const auto cookie = xcb_query_pointer(m_connection, window);
        const auto answer = owned(xcb_query_pointer_reply(m_connection, cookie, nullptr));
        window = answer ? answer->child : XCB_NONE;
        if (windows.contains(window))
            return true;
    }
    return false;
}

void XServer::activate(WId window) const {
    // _NET_ACTIVE_WINDOW of the Extended Window Manager Hints. It names a panel as the source, because the
    // user clicked on one.
    constexpr uint32_t fromPanel = 2;
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = static_cast<xcb_window_t>(window);
    message.type = atom("_NET_ACTIVE_WINDOW");
    message.data.data32[0] = fromPanel;
    message.data.data32[1] = time();
    if (message.type != XCB_ATOM_NONE) {
        xcb_send_event(m_connection, 0, m_root,
                       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                       reinterpret_cast<const char*>(&message));
        xcb_flush(m_connection);
    }
}

void XServer::move(WId window, QPoint place) const {
    const QPoint pixel = toPixels(place);
    const std::array<int32_t, 2> corner{pixel.x(), pixel.y()};
    xcb_configure_window(m_connection, static_cast<xcb_window_t>(window),
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, corner.data());
    xcb_flush(m_connection);
}

uint32_t XServer::atom(const char* name) const {
    const auto cookie = xcb_intern_atom(m_connection, 1, std::strlen(name), name);
    const auto answer = owned(xcb_intern_atom_reply(m_connection, cookie, nullptr));
    return answer ? answer->atom : xcb_atom_t{XCB_ATOM_NONE};
}

bool XServer::isDock(uint32_t window) const {
    const xcb_atom_t type = atom("_NET_WM_WINDOW_TYPE");
    const xcb_atom_t dock = atom("_NET_WM_WINDOW_TYPE_DOCK");
    constexpr uint32_t manyTypes = 16;
    const auto cookie = xcb_get_property(m_connection, 0, window, type, XCB_ATOM_ATOM, 0, manyTypes);
    const auto answer = owned(xcb_get_property_reply(m_connection, cookie, nullptr));
    if (!answer || answer->format != 32 || dock == XCB_ATOM_NONE)
        return false;
    const auto* types = static_cast<const xcb_atom_t*>(xcb_get_property_value(answer.get()));
    const auto* end = types + answer->value_len;
    return std::find(types, end, dock) != end;
}

uint32_t XServer::time() const {
    // The server sends its time with events, so we cause one by changing a property.
    const xcb_window_t window = xcb_generate_id(m_connection);
    const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, m_root, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    xcb_change_property(m_connection, XCB_PROP_MODE_APPEND, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 0,
                        nullptr);
    xcb_destroy_window(m_connection, window);
    xcb_flush(m_connection);
    while (const auto event = owned(xcb_wait_for_event(m_connection))) {
        if ((event->response_type & ~0x80U) == XCB_PROPERTY_NOTIFY)
            return reinterpret_cast<const xcb_property_notify_event_t*>(event.get())->time;
        if (event->response_type == 0)
            break;
    }
    return XCB_CURRENT_TIME;
}

}  // namespace tidemark
