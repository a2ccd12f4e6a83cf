#pragma once

#include "desktop/DBusMenu.h"
#include "desktop/StatusItem.h"
#include "desktop/StatusNotifierItem.h"
#include "desktop/StatusNotifierRegistration.h"

#include <QDBusConnection>
#include <QString>

namespace tidemark {

/// A panel entry on a bus connection of its own, so that each item has the fixed object paths that some
/// panels assume. The connection closes with the item, which takes it off the panel at once.
class DBusStatusItem final : public StatusItem {
public:
    /// `connection` was opened for this item alone and is closed by it.
    DBusStatusItem(QDBusConnection connection, const QString& service, const QString& applicationName,
                   const QString& id);
    ~DBusStatusItem() override;

    void setImage(const StatusImage& image) override { m_item.setImage(image); }
    void setAttributedTitle(const AttributedTitle& title) override { m_item.setAttributedTitle(title); }
    void setToolTip(const QString& toolTip) override { m_item.setToolTip(toolTip); }
    void setAction(Action action) override { m_item.setAction(std::move(action)); }

private:
    QDBusConnection m_connection;
    DBusMenu m_menu;
    StatusNotifierItem m_item;
    std::unique_ptr<StatusNotifierRegistration> m_registration;
};

}  // namespace tidemark
