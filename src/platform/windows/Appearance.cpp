#include "platform/windows/Appearance.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QEvent>
#include <QGuiApplication>
#include <utility>

#include "platform/x11/XServer.h"
#include "platform/x11/XSettings.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

const QString portalService = u"org.freedesktop.portal.Desktop"_s;
const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString portalInterface = u"org.freedesktop.portal.Settings"_s;
const QString settingGroup = u"org.freedesktop.appearance"_s;
const QString settingKey = u"color-scheme"_s;

bool isDarkPalette(const QPalette& palette) {
    return palette.color(QPalette::Window).lightnessF() < palette.color(QPalette::WindowText).lightnessF();
}

/// As the themes of X11 desktops are called: "Adwaita-dark", but not "Arc-Darker", of which only the title
/// bars are dark.
bool isDarkTheme(const QString& name) {
    return name.contains("dark"_L1, Qt::CaseInsensitive) && !name.contains("darker"_L1, Qt::CaseInsensitive);
}

QPalette ownPalette(bool isDark, const QColor& accent) {
    const QColor window = isDark ? QColor(0x2b, 0x2b, 0x2e) : QColor(0xf4, 0xf4, 0xf5);
    const QColor base = isDark ? QColor(0x1f, 0x1f, 0x22) : QColor(0xff, 0xff, 0xff);
    const QColor text = isDark ? QColor(0xee, 0xee, 0xf0) : QColor(0x1d, 0x1d, 0x20);
    const QColor button = isDark ? QColor(0x3c, 0x3c, 0x40) : QColor(0xff, 0xff, 0xff);
    QPalette palette(text, button, button.lighter(), button.darker(), button.darker(120), text, Qt::white,
                     base, window);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    return palette;
}

}  // namespace

Appearance::Appearance(QDBusConnection bus) : m_bus(std::move(bus)) {
    qGuiApp->installEventFilter(this);
    m_bus.connect(portalService, portalPath, portalInterface, u"SettingChanged"_s, this,
                  SLOT(handleSetting(QString, QString, QDBusVariant)));
    askPortal();
    refresh();
}

void Appearance::askPortal() {
    QDBusMessage call = QDBusMessage::createMethodCall(portalService, portalPath, portalInterface, u"Read"_s);
    call << settingGroup << settingKey;
    // Where nobody has needed it so far, nobody has a preference.
    call.setAutoStartService(false);
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        if (reply.isValid())
            handlePreference(reply.value().variant());
    });
}

void Appearance::handleSetting(const QString& group, const QString& key, const QDBusVariant& value) {
    if (group == settingGroup && key == settingKey)
        handlePreference(value.variant());
}

void Appearance::handlePreference(const QVariant& value) {
    constexpr uint preferDark = 1;
    constexpr uint preferLight = 2;
    // Portals wrap the answer to Read once more than its changes.
    const QVariant inner = value.canConvert<QDBusVariant>() ? value.value<QDBusVariant>().variant() : value;
    const uint preference = inner.toUInt();
    m_prefersDark = preference == preferDark || preference == preferLight
                        ? std::optional(preference == preferDark)
                        : std::nullopt;
    refresh();
}

void Appearance::refresh() {
    const QPalette platform = QGuiApplication::palette();
    bool isDark = isDarkPalette(platform);
    if (m_prefersDark) {
        isDark = *m_prefersDark;
    } else if (const auto server = XServer::connect()) {
        const QString theme = xSettingsText(*server, QByteArrayLiteral("Net/ThemeName"));
        isDark = theme.isEmpty() ? isDark : isDarkTheme(theme);
    }
    const QPalette palette = isDark == isDarkPalette(platform)
                                 ? platform
                                 : ownPalette(isDark, platform.color(QPalette::Highlight));
    if (std::exchange(m_isDark, isDark) != isDark || palette != m_palette) {
        m_palette = palette;
        Q_EMIT changed();
    }
}

bool Appearance::eventFilter(QObject* watched, QEvent* event) {
    if (watched == qGuiApp && event->type() == QEvent::ApplicationPaletteChange)
        refresh();
    return QObject::eventFilter(watched, event);
}

}  // namespace tidemark
