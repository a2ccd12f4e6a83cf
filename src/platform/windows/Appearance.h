#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>
#include <QPalette>
#include <optional>

namespace tidemark {

/// The colours that the user's desktop wants ordinary windows to have. Whether they are dark is what the
/// settings portal says (org.freedesktop.portal.Settings, "color-scheme"), else what the name of the theme
/// says that X11 desktops publish, else what the platform's own palette is. UI thread only.
class Appearance final : public QObject {
    Q_OBJECT

public:
    explicit Appearance(QDBusConnection bus = QDBusConnection::sessionBus());

    [[nodiscard]] bool isDark() const { return m_isDark; }
    /// The platform's palette where it is as light or dark as it should be, else one of our own.
    [[nodiscard]] const QPalette& palette() const { return m_palette; }

    /// Looks again at what does not tell of its changes. Call when a window is shown or activated.
    void refresh();

Q_SIGNALS:
    void changed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private Q_SLOTS:
    void handleSetting(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void askPortal();
    void handlePreference(const QVariant& value);

    QDBusConnection m_bus;
    /// What the portal says; nothing when it has no preference or there is no portal.
    std::optional<bool> m_prefersDark;
    bool m_isDark = false;
    QPalette m_palette;
};

}  // namespace tidemark
