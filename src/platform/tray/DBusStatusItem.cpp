#include "platform/tray/DBusStatusItem.h"

#include <QCursor>
#include <chrono>
#include <utility>

#include "platform/base/BusCall.h"
#include "platform/x11/XServer.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

/// How long after a click a panel may take to show the menu itself.
constexpr auto panelPatience = std::chrono::milliseconds(200);

constexpr auto exportedMembers = QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals;

QString itemPath() {
    return u"/StatusNotifierItem"_s;
}

QString menuPath() {
    return u"/MenuBar"_s;
}

}  // namespace

DBusStatusItem::DBusStatusItem(QDBusConnection connection, const QString& service,
                               std::shared_ptr<StatusNotifierQueue> queue, const QString& applicationName,
                               const QString& id)
    : m_connection(std::move(connection)), m_item(applicationName, id, menuPath()) {
    m_connection.registerObject(menuPath(), &m_menu, exportedMembers | QDBusConnection::ExportAllProperties);
    exportItem();
    // Not QDBusConnection::registerService(), which blocks for the answer. The bus handles our messages in
    // order, so we own the name before the watcher hears of it.
    m_connection.send(nameRequest(service));
    m_item.setReadHandler([queue] { queue->noteRead(); });
    m_registration = std::make_unique<StatusNotifierRegistration>(m_connection, service, std::move(queue),
                                                                  [this](TrayHost host) { adaptTo(host); });
    m_patience.setSingleShot(true);
    QObject::connect(&m_patience, &QTimer::timeout, &m_item, [this] { popUpMenu(); });
}

DBusStatusItem::~DBusStatusItem() {
    m_registration.reset();
    m_connection.unregisterObject(itemPath());
    m_connection.unregisterObject(menuPath());
    QDBusConnection::disconnectFromBus(m_connection.name());
}

void DBusStatusItem::exportItem() {
    const bool hasMenu = m_item.itemIsMenu() || m_host != TrayHost::menuOptional;
    if (m_isExportedWithMenu == hasMenu) {
        // Exporting the same again would make the item vanish for a moment.
        return;
    }
    m_isExportedWithMenu = hasMenu;
    m_connection.unregisterObject(itemPath());
    m_connection.registerObject(itemPath(), &m_item,
                                exportedMembers | (hasMenu ? QDBusConnection::ExportAllProperties
                                                           : QDBusConnection::ExportScriptableProperties));
}

void DBusStatusItem::adaptTo(TrayHost host) {
    m_host = host;
    m_item.setHost(host);
    exportItem();
    if (m_item.itemIsMenu())
        return;
    Menu menu;
    if (host == TrayHost::indicators) {
        menu.append({.identifier = u"open"_s,
                     .title = u"Open "_s + m_item.applicationName(),
                     .action = [this] { m_item.runAction({}); }});
    }
    m_menu.setMenu(menu);
}

void DBusStatusItem::setMenu(const Menu& menu) {
    m_item.setItemIsMenu(true);
    exportItem();
    m_item.setAction([this](QPoint) { showMenuUnlessPanelDoes(); });
    m_menu.setShownHandler([this] { leaveMenuToPanel(); });
    m_menu.setMenu(menu);
    if (m_window)
        m_window->setMenu(menu);
}

void DBusStatusItem::showMenuUnlessPanelDoes() {
    if (!m_menu.wasShownWithin(panelPatience))
        m_patience.start(panelPatience);
}

void DBusStatusItem::leaveMenuToPanel() {
    m_patience.stop();
    if (m_window)
        m_window->close();
}

void DBusStatusItem::popUpMenu() {
    if (!m_window)
        m_window = std::make_unique<MenuWindow>();
    // Not the place that the panel reports, because panels disagree on its coordinates.
    const QPoint place = QCursor::pos();
    const auto server = XServer::connect();
    m_window->popup(m_menu.menu(), place, server ? server->panelAt(place) : QRect());
}

}  // namespace tidemark
