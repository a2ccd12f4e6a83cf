#pragma once

#include <QString>
#include <memory>

#include "platform/tray/StatusItem.h"
#include "platform/tray/StatusNotifierQueue.h"

namespace tidemark {

/// The panel's tray as StatusNotifierItem entries on the session bus. An item may be made long before there
/// is a panel, and outlives panels: it appears as soon as one is there.
class DBusStatusBar final : public StatusBar {
public:
    /// `applicationName` begins every item's title.
    explicit DBusStatusBar(QString applicationName);

    [[nodiscard]] std::unique_ptr<StatusItem> createStatusItem(const QString& id) override;
    /// Known by an icon that was read. A watcher may run without any panel, and what some say of their hosts
    /// is wrong.
    [[nodiscard]] bool hasHost() const override { return m_registrations->hasBeenRead(); }

private:
    QString m_applicationName;
    int m_itemCount = 0;
    std::shared_ptr<StatusNotifierQueue> m_registrations = std::make_shared<StatusNotifierQueue>();
};

}  // namespace tidemark
