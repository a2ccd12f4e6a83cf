#include "platform/x11/PointerGrab.h"

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

#include "platform/x11/XServer.h"

namespace tidemark {

std::optional<bool> isPointerGrabbed() {
    // A new connection, because a grab of the application's own one would replace a grab that it holds
    // already. When the connection closes, the server releases what it grabbed.
    const auto server = XServer::connect();
    if (!server)
        return std::nullopt;
    // X11 has no request that asks for a grab, so we try to grab the pointer ourselves.
    xcb_connection_t* connection = server->connection();
    const auto cookie = xcb_grab_pointer(connection, 0, server->root(), 0, XCB_GRAB_MODE_ASYNC,
                                         XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, XCB_CURRENT_TIME);
    const std::unique_ptr<xcb_grab_pointer_reply_t, decltype(&std::free)> reply(
        xcb_grab_pointer_reply(connection, cookie, nullptr), &std::free);
    return reply ? std::optional(reply->status == XCB_GRAB_STATUS_ALREADY_GRABBED) : std::nullopt;
}

}  // namespace tidemark
