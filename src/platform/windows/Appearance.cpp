#include "platform/windows/Appearance.h"

#include <QEvent>
#include <QGuiApplication>
#include <utility>

#include "platform/base/BusCall.h"
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

/// By the naming habit of X11 themes: "Adwaita-dark" is dark. "Arc-Darker" is not, because only its title
/// bars are.
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
    m_tasks.start([this](std::stop_token stop) { return askPortal(std::move(stop)); });
    refresh();
}

QCoro::Task<> Appearance::askPortal(std::stop_token stop) {
    QDBusMessage call = QDBusMessage::createMethodCall(portalService, portalPath, portalInterface, u"Read"_s);
    call << settingGroup << settingKey;
    // A desktop with a preference has started its portal already.
    call.setAutoStartService(false);
    const QDBusMessage answer = co_await answerTo(call, m_bus, std::move(stop));
    if (answer.type() == QDBusMessage::ReplyMessage)
        handlePreference(answer.arguments().value(0).value<QDBusVariant>().variant());
}

void Appearance::handleSetting(const QString& group, const QString& key, const QDBusVariant& value) {
    if (group == settingGroup && key == settingKey)
        handlePreference(value.variant());
}

void Appearance::handlePreference(const QVariant& value) {
    constexpr uint preferDark = 1;
    constexpr uint preferLight = 2;
    // The answer to Read is wrapped in one more variant than the value of SettingChanged.
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
