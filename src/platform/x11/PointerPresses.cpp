#include "platform/x11/PointerPresses.h"

#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <QPointer>
#include <cstdlib>
#include <utility>

#include "platform/x11/XServer.h"

namespace tidemark {
namespace {

/// Since 2.1 raw events arrive even while another client, such as a panel, grabs the pointer.
constexpr uint16_t majorVersion = 2;
constexpr uint16_t minorVersion = 2;
/// The buttons are left, middle and right; higher numbers belong to the wheel.
constexpr uint32_t lastButton = 3;

}  // namespace

std::unique_ptr<PointerPresses> PointerPresses::watch() {
    std::unique_ptr<XServer> server = XServer::connect();
    if (!server)
        return nullptr;
    xcb_connection_t* connection = server->connection();
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection, &xcb_input_id);
    if (extension == nullptr || extension->present == 0)
        return nullptr;
    const auto cookie = xcb_input_xi_query_version(connection, majorVersion, minorVersion);
    const std::unique_ptr<xcb_input_xi_query_version_reply_t, decltype(&std::free)> version(
        xcb_input_xi_query_version_reply(connection, cookie, nullptr), &std::free);
    if (!version || version->major_version != majorVersion || version->minor_version < minorVersion)
        return nullptr;
    const struct {
        xcb_input_event_mask_t head;
        uint32_t events;
    } mask{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
           XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE};
    xcb_input_xi_select_events(connection, server->root(), 1, &mask.head);
    xcb_flush(connection);
    return std::unique_ptr<PointerPresses>(new PointerPresses(std::move(server), extension->major_opcode));
}

PointerPresses::PointerPresses(std::unique_ptr<XServer> server, uint8_t extension)
    : m_server(std::move(server)),
      m_extension(extension),
      m_notifier(xcb_get_file_descriptor(m_server->connection()), QSocketNotifier::Read) {
    connect(&m_notifier, &QSocketNotifier::activated, this, &PointerPresses::readPending);
}

PointerPresses::~PointerPresses() = default;

void PointerPresses::readPending() {
    const QPointer<PointerPresses> self(this);
    using Event = std::unique_ptr<xcb_generic_event_t, decltype(&std::free)>;
    while (const Event event{xcb_poll_for_event(m_server->connection()), &std::free}) {
        const auto* generic = reinterpret_cast<const xcb_ge_generic_event_t*>(event.get());
        if ((generic->response_type & ~0x80U) != XCB_GE_GENERIC || generic->extension != m_extension)
            continue;
        // Releases have the same structure.
        const auto* raw = reinterpret_cast<const xcb_input_raw_button_press_event_t*>(generic);
        if (raw->detail > lastButton)
            continue;
        if (raw->event_type == XCB_INPUT_RAW_BUTTON_PRESS)
            Q_EMIT pressed();
        else if (raw->event_type == XCB_INPUT_RAW_BUTTON_RELEASE)
            Q_EMIT released();
        if (!self)
            return;
    }
    // Without a server, the notifier would fire endlessly.
    if (xcb_connection_has_error(m_server->connection()) != 0)
        m_notifier.setEnabled(false);
}

}  // namespace tidemark
