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

/// A panel entry on a bus connection of its own, so that each item has the fixed object paths that some
/// panels assume. The connection closes with the item, which takes it off the panel at once.
class DBusStatusItem final : public StatusItem {
public:
    /// `connection` was opened for this item alone and is closed by it; `queue` is that of all items.
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
    /// Puts the item on the bus, with its menu or as one that has none.
    void exportItem();
    /// For panels that neither open the menu on a click nor when the item refuses to be activated.
    void showMenuUnlessPanelDoes();
    void leaveMenuToPanel();
    void popUpMenu();

    QDBusConnection m_connection;
    TrayHost m_host = TrayHost::usual;
    std::optional<bool> m_isExportedWithMenu;
    DBusMenu m_menu;
    StatusNotifierItem m_item;
    std::unique_ptr<StatusNotifierRegistration> m_registration;
    /// Made when it is first needed.
    std::unique_ptr<MenuWindow> m_window;
    QTimer m_patience;
};

}  // namespace tidemark
