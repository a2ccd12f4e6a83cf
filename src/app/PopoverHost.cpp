#include <QCoreApplication>

#include "app/AppDelegate.h"
#include "cloudflare/load/AnalyticsLoader.h"
#include "platform/base/MemoryTrim.h"
#include "popover/PopoverView.h"

namespace tidemark {

PopoverModel::Actions AppDelegate::popoverActions() {
    return {.onOpenPreferences = [this] { openPreferences(); },
            .onOpenDashboard = [this] { m_services.workspace.openURL(m_services.endpoints.vercelDashboard); },
            .onQuit = [] { QCoreApplication::quit(); },
            .onOpenAnalyticsDashboard =
                [this] { m_services.workspace.openURL(m_services.endpoints.cloudflareDashboard); },
            .loadAnalytics =
                [this](PopoverModel::AnalyticsReload reload, std::stop_token stop) {
                    const AnalyticsLoader loader(m_appState, m_services.http, m_services.clock,
                                                 m_services.endpoints.cloudflareApi);
                    return loader.load(reload == PopoverModel::AnalyticsReload::always
                                           ? AnalyticsLoader::Reload::always
                                           : AnalyticsLoader::Reload::ifStale,
                                       stop);
                }};
}

void AppDelegate::setupPopover() {
    m_popover = std::make_unique<Popover>([this] { return makePopoverWindow(); });
    // Before its size is asked for.
    connect(m_popover.get(), &Popover::aboutToShow, this, [this] { m_popoverModel.setActive(true); });
    connect(m_popover.get(), &Popover::dropped, this, &giveBackMemory);
    if (m_mainStatusItem)
        m_mainStatusItem->setAction([this](QPoint place) { togglePopover(place); });
}

std::unique_ptr<QWindow> AppDelegate::makePopoverWindow() {
    return std::make_unique<PopoverView>(m_popoverModel, engine());
}

void AppDelegate::togglePopover(QPoint place) {
    m_popover->toggle(place);
}

void AppDelegate::showPopover() {
    if (m_popover)
        m_popover->showAsWindow();
}

}  // namespace tidemark
