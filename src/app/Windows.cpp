#include "app/Windows.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <utility>

#include "cloudflare/load/AnalyticsLoader.h"
#include "controls/ProgramIcon.h"
#include "platform/base/MemoryTrim.h"
#include "popover/PopoverView.h"

namespace tidemark {

using namespace Qt::StringLiterals;

Windows::Windows(AppState& state, ConfigurationService& configuration, Services services)
    : m_state(state),
      m_configuration(configuration),
      m_services(std::move(services)),
      m_popoverModel(m_state, m_services.clock, m_services.workspace, m_services.version, popoverActions()),
      m_popover([this] { return std::make_unique<PopoverView>(m_popoverModel, engine()); }) {
    // Before its size is asked for.
    connect(&m_popover, &Popover::aboutToShow, this, [this] {
        m_popoverModel.setActive(true);
        Q_EMIT popoverAboutToShow();
    });
    connect(&m_popover, &Popover::dropped, this, &giveBackMemory);
    connect(&m_configuration, &ConfigurationService::readLate, this, &Windows::offerStored);
    connect(&m_state, &AppState::accountErrorsChanged, this, &Windows::showRefusals);
    if (const Updater* updater = m_services.updates.controller())
        connect(updater, &Updater::presentationRequested, this, &Windows::presentUpdate);
}

Windows::~Windows() = default;

PopoverModel::Actions Windows::popoverActions() {
    return {.onOpenPreferences = [this] { openPreferences(); },
            .onOpenDashboard = [this] { m_services.workspace.openURL(m_services.endpoints.vercelDashboard); },
            .onManageProjects = [this] { Q_EMIT projectsManaged(); },
            .onQuit = [] { QCoreApplication::quit(); },
            .onOpenAnalyticsDashboard =
                [this] { m_services.workspace.openURL(m_services.endpoints.cloudflareDashboard); },
            .loadAnalytics =
                [this](AnalyticsReload reload, std::stop_token stop) {
                    const AnalyticsLoader loader(m_state, m_services.http, m_services.clock,
                                                 m_services.endpoints.cloudflareApi);
                    return loader.load(reload, stop);
                }};
}

QQmlEngine& Windows::engine() {
    if (!m_engine) {
        m_engine = std::make_unique<QQmlEngine>();
        QGuiApplication::setWindowIcon(programIcon());
    }
    return *m_engine;
}

void Windows::openPreferences() {
    m_popover.close();
    preferencesController().showWindow();
}

void Windows::openPreferences(const std::optional<AppConfiguration>& stored) {
    m_popover.close();
    preferencesController().showWindow(stored);
}

PreferencesWindowController& Windows::preferencesController() {
    if (!m_preferencesController) {
        m_preferencesController =
            std::make_unique<PreferencesWindowController>(PreferencesWindowController::Services{
                .engine = engine(),
                .load = [this] { return m_configuration.loadForEditing(); },
                .notice =
                    [this] {
                        const QString error = m_configuration.saveError();
                        return error.isEmpty() ? QString() : u"These settings could not be saved: "_s + error;
                    },
                .makeUpdates =
                    [this] { return std::make_unique<UpdatesSection>(m_services.updates, m_services.clock); },
                .onOpenVercelTokens =
                    [this] { m_services.workspace.openURL(m_services.endpoints.vercelTokens); },
                .onOpenCloudflareTokens =
                    [this] { m_services.workspace.openURL(m_services.endpoints.cloudflareTokens); }});
        m_preferencesController->onSave = [this](const AppConfiguration& configuration) {
            m_configuration.saveConfiguration(configuration);
        };
        connect(m_preferencesController.get(), &PreferencesWindowController::closed, this, &giveBackMemory);
        showRefusals();
    }
    return *m_preferencesController;
}

void Windows::offerStored(const AppConfiguration& stored) {
    if (m_preferencesController)
        m_preferencesController->offerStored(stored);
}

void Windows::showRefusals() {
    if (m_preferencesController)
        m_preferencesController->setAccountErrors(m_state.accountErrors());
}

void Windows::presentUpdate() {
    if (!m_updateWindow) {
        m_updateWindow =
            std::make_unique<UpdateWindow>(*m_services.updates.controller(), engine(), m_services.version);
        connect(m_updateWindow.get(), &UpdateWindow::closed, this, &giveBackMemory);
    }
    m_updateWindow->present();
}

}  // namespace tidemark
