#include "platform/x11/PointerGrab.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <cstdlib>
#include <memory>

namespace tidemark {

std::optional<bool> isPointerGrabbed() {
    const bool isX11 = qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr &&
                       QGuiApplication::platformName() == u"xcb";
    // A connection of its own: whatever the application itself has grabbed stays grabbed. With the connection
    // ends what was grabbed by it.
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        isX11 ? xcb_connect(nullptr, nullptr) : nullptr, &xcb_disconnect);
    if (!connection || xcb_connection_has_error(connection.get()) != 0)
        return std::nullopt;
    // The only way to ask is to try.
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data->root;
    const auto cookie = xcb_grab_pointer(connection.get(), 0, root, 0, XCB_GRAB_MODE_ASYNC,
                                         XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, XCB_CURRENT_TIME);
    const std::unique_ptr<xcb_grab_pointer_reply_t, decltype(&std::free)> reply(
        xcb_grab_pointer_reply(connection.get(), cookie, nullptr), &std::free);
    return reply ? std::optional(reply->status == XCB_GRAB_STATUS_ALREADY_GRABBED) : std::nullopt;
}

}  // namespace tidemark
