#pragma once

#include <QDBusConnection>
#include <QString>
#include <QTimer>
#include <memory>
#include <optional>

#include "platform/tray/DBusMenu.h"
#include "platform/tray/StatusItem.h"
#include "platform/tray/StatusNotifierItem.h"
#include "platform/tray/StatusNotifierRegistration.h"
#include "platform/windows/MenuWindow.h"

namespace tidemark {

/// A panel item on a bus connection of its own, because some panels assume fixed object paths. Destroying the
/// item closes the connection, which removes the item from the panel at once.
class DBusStatusItem final : public StatusItem {
public:
    /// Takes over `connection`, which was opened for this item alone; `queue` is shared by all items.
    DBusStatusItem(QDBusConnection connection, const QString& service,
                   std::shared_ptr<StatusNotifierQueue> queue, const QString& applicationName,
                   const QString& id);
    ~DBusStatusItem() override;

    void setImage(const StatusImage& image) override { m_item.setImage(image); }
    void setDot(const QColor& color) override { m_item.setDot(color); }
    void setLabel(const QString& label) override { m_item.setLabel(label); }
    void setToolTip(const QString& toolTip) override { m_item.setToolTip(toolTip); }
    void setAction(Action action) override { m_item.setAction(std::move(action)); }
    void setMenu(const Menu& menu) override;

private:
    void adaptTo(TrayHost host);
    /// Exports the item on the bus, with or without the property that names its menu.
    void exportItem();
    /// For panels that open the menu neither on a click nor when the item refuses `Activate`.
    void showMenuUnlessPanelDoes();
    void leaveMenuToPanel();
    void popUpMenu();

    QDBusConnection m_connection;
    TrayHost m_host = TrayHost::usual;
    std::optional<bool> m_isExportedWithMenu;
    DBusMenu m_menu;
    StatusNotifierItem m_item;
    std::unique_ptr<StatusNotifierRegistration> m_registration;
    /// Created on first use.
    std::unique_ptr<MenuWindow> m_window;
    QTimer m_patience;
};

}  // namespace tidemark
