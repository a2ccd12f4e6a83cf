#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>
#include <QPalette>
#include <optional>
#include <stop_token>

#include "platform/base/TaskScope.h"

namespace tidemark {

/// The desktop's colours for ordinary windows. Whether they are dark is decided by the settings portal
/// (org.freedesktop.portal.Settings, "color-scheme"); without its answer by the name of the theme that X11
/// desktops publish; without one by the platform's own palette. UI thread only.
class Appearance final : public QObject {
    Q_OBJECT

public:
    explicit Appearance(QDBusConnection bus = QDBusConnection::sessionBus());

    [[nodiscard]] bool isDark() const { return m_isDark; }
    /// The platform's palette where it agrees with `isDark`, else one of our own.
    [[nodiscard]] const QPalette& palette() const { return m_palette; }

    /// Reads the X11 theme and the palette again, because not all desktops report changes of them. Call when
    /// a window is shown or activated.
    void refresh();

Q_SIGNALS:
    void changed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private Q_SLOTS:
    void handleSetting(const QString& group, const QString& key, const QDBusVariant& value);

private:
    QCoro::Task<> askPortal(std::stop_token stop);
    void handlePreference(const QVariant& value);

    QDBusConnection m_bus;
    /// The portal's answer; nothing when it has no preference or there is no portal.
    std::optional<bool> m_prefersDark;
    bool m_isDark = false;
    QPalette m_palette;
    /// Last: its tasks use the members above.
    TaskScope m_tasks;
};

}  // namespace tidemark
