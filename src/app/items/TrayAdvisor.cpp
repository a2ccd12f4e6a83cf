#include "app/items/TrayAdvisor.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

namespace tidemark {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// How long a panel may take at login.
constexpr auto panelPatience = 10s;
const QString toldKey = u"desktopsWithoutTray"_s;

struct DesktopAdvice {
    QLatin1StringView desktop;
    QStringView advice;
};

constexpr QStringView runBar = u"Run a bar that has a tray, such as waybar.";
/// Named as the panels' own lists of plugins name them.
constexpr std::array knownDesktops{
    DesktopAdvice{"GNOME"_L1,
                  u"GNOME shows tray icons only with an extension: install “AppIndicator and "
                  u"KStatusNotifierItem Support” and switch it on."},
    DesktopAdvice{"KDE"_L1, u"Add the widget “System Tray” to a panel."},
    DesktopAdvice{"XFCE"_L1, u"Add the “Status Tray Plugin” to the panel."},
    DesktopAdvice{"LXQt"_L1, u"Add the plugin “Status Notifier” to the panel."},
    DesktopAdvice{"MATE"_L1, u"Add the “Notification Area” to the panel."},
    DesktopAdvice{"X-Cinnamon"_L1, u"Add the “XApp Status Applet” to the panel."},
    DesktopAdvice{"sway"_L1, runBar},
    DesktopAdvice{"Hyprland"_L1, runBar},
    DesktopAdvice{"river"_L1, runBar},
    DesktopAdvice{"niri"_L1, runBar},
    DesktopAdvice{"labwc"_L1, runBar},
    DesktopAdvice{"Wayfire"_L1, runBar},
    DesktopAdvice{"wlroots"_L1, runBar}};

constexpr QStringView anyDesktop =
    u"Add a tray to the panel, or run a panel that has one, such as waybar (Wayland) or xfce4-panel (X11).";

}  // namespace

TrayAdvisor::TrayAdvisor(Services services) : m_services(std::move(services)) {}

void TrayAdvisor::start() {
    m_tasks.start([this](std::stop_token stop) { return lookOnce(stop); });
}

QCoro::Task<> TrayAdvisor::lookOnce(std::stop_token stop) {
    co_await m_services.clock.sleep(panelPatience, stop);
    if (stop.stop_requested())
        co_return;
    if (!m_services.statusBar.hasHost()) {
        tell();
        co_return;
    }
    QStringList told = m_services.defaults.stringArray(toldKey);
    if (told.removeAll(m_services.desktop) > 0)
        m_services.defaults.setValue(toldKey, told);
}

void TrayAdvisor::tell() {
    const QString title = u"Tidemark found no tray"_s;
    const QString text =
        advice(m_services.desktop) + u" Until then, start Tidemark again to see your projects."_s;
    const auto print = [write = m_services.print, title, text] { write(title + u". "_s + text); };
    QStringList told = m_services.defaults.stringArray(toldKey);
    if (told.contains(m_services.desktop)) {
        print();
        return;
    }
    m_services.notifications.announce(title, text, NotificationManager::Opens::popover,
                                      [&defaults = m_services.defaults, told, print] {
                                          // Nobody has seen it, so the next run tries again.
                                          defaults.setValue(toldKey, told);
                                          print();
                                      });
    m_services.defaults.setValue(toldKey, told + QStringList{m_services.desktop});
}

QString TrayAdvisor::advice(const QString& desktop) {
    const QStringList names = desktop.split(u':');
    const auto* const known = std::ranges::find_if(knownDesktops, [&names](const DesktopAdvice& candidate) {
        return names.contains(candidate.desktop, Qt::CaseInsensitive);
    });
    return (known == knownDesktops.end() ? anyDesktop : known->advice).toString();
}

}  // namespace tidemark
