#pragma once

#include <QString>
#include <memory>

#include "platform/tray/StatusItem.h"
#include "platform/tray/StatusNotifierQueue.h"

namespace tidemark {

/// Shows status items through StatusNotifierItem on the session bus. An item may exist before a panel and
/// outlive it; it appears in each panel that starts.
class DBusStatusBar final : public StatusBar {
public:
    /// Every item's title begins with `applicationName`.
    explicit DBusStatusBar(QString applicationName);

    [[nodiscard]] std::unique_ptr<StatusItem> createStatusItem(const QString& id) override;
    /// A host is assumed once an icon has been read: watchers run without panels, and some report their hosts
    /// wrongly.
    [[nodiscard]] bool hasHost() const override { return m_registrations->hasBeenRead(); }

private:
    QString m_applicationName;
    int m_itemCount = 0;
    std::shared_ptr<StatusNotifierQueue> m_registrations = std::make_shared<StatusNotifierQueue>();
};

}  // namespace tidemark
