#include <QGuiApplication>

#include "app/AppDelegate.h"
#include "controls/ProgramIcon.h"
#include "platform/base/MemoryTrim.h"

namespace tidemark {

QQmlEngine& AppDelegate::engine() {
    if (!m_engine) {
        m_engine = std::make_unique<QQmlEngine>();
        QGuiApplication::setWindowIcon(programIcon());
    }
    return *m_engine;
}

void AppDelegate::openPreferences() {
    m_popover->close();
    preferencesController().showWindow();
}

PreferencesWindowController& AppDelegate::preferencesController() {
    if (!m_preferencesController) {
        m_preferencesController =
            std::make_unique<PreferencesWindowController>(PreferencesWindowController::Services{
                .engine = engine(),
                .load = [this] { return loadForEditing(); },
                .makeUpdates =
                    [this] { return std::make_unique<UpdatesSection>(m_services.updates, m_services.clock); },
                .onOpenVercelTokens =
                    [this] { m_services.workspace.openURL(m_services.endpoints.vercelTokens); },
                .onOpenCloudflareTokens =
                    [this] { m_services.workspace.openURL(m_services.endpoints.cloudflareTokens); }});
        connect(m_preferencesController.get(), &PreferencesWindowController::closed, this, &giveBackMemory);
    }
    m_preferencesController->onSave = [this](const AppConfiguration& configuration) {
        saveConfiguration(configuration);
    };
    return *m_preferencesController;
}

void AppDelegate::setupUpdates() {
    if (const Updater* updater = m_services.updates.controller())
        connect(updater, &Updater::presentationRequested, this, &AppDelegate::presentUpdate);
}

void AppDelegate::presentUpdate() {
    if (!m_updateWindow) {
        m_updateWindow =
            std::make_unique<UpdateWindow>(*m_services.updates.controller(), engine(), m_services.version);
        connect(m_updateWindow.get(), &UpdateWindow::closed, this, &giveBackMemory);
    }
    m_updateWindow->present();
}

}  // namespace tidemark
