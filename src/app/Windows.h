#pragma once

#include <QObject>
#include <QPoint>
#include <QQmlEngine>
#include <QString>
#include <QWindow>
#include <memory>
#include <optional>

#include "app/ConfigurationService.h"
#include "app/Endpoints.h"
#include "notify/UpdateController.h"
#include "platform/base/Clock.h"
#include "platform/http/HttpClient.h"
#include "platform/session/Workspace.h"
#include "platform/windows/Popover.h"
#include "popover/PopoverModel.h"
#include "preferences/PreferencesWindowController.h"
#include "preferences/UpdateWindow.h"
#include "state/AppState.h"

namespace tidemark {

/// The popover, the preferences window and the update window. Each is made when it is first shown. UI thread
/// only.
class Windows final : public QObject {
    Q_OBJECT

public:
    struct Services {
        HttpClient& http;
        Clock& clock;
        UpdateController& updates;
        Workspace& workspace;
        Endpoints endpoints;
        /// The program's; may be empty.
        QString version;
    };

    /// The state, the configuration service and all services outlive the windows.
    Windows(AppState& state, ConfigurationService& configuration, Services services);
    ~Windows() override;

    /// Opens the popover at a click on the panel that was reported to be there, or closes it.
    void togglePopover(QPoint place) { m_popover.toggle(place); }
    /// Opens the popover where no panel was clicked.
    void showPopover() { m_popover.showAsWindow(); }

    /// Does what the project's button in the popover does.
    void redeploy(const QString& projectId) { m_popoverModel.redeploy(projectId); }

    /// Closes the popover and shows the preferences window with the stored configuration.
    void openPreferences();
    /// The same with a configuration that has just been loaded, so that the keyring is not asked twice.
    void openPreferences(const std::optional<AppConfiguration>& stored);

Q_SIGNALS:
    void popoverAboutToShow();
    /// The list of all projects is on the screen.
    void projectsManaged();

private:
    [[nodiscard]] PopoverModel::Actions popoverActions();
    [[nodiscard]] QQmlEngine& engine();
    /// The window's controller, made at the first opening.
    [[nodiscard]] PreferencesWindowController& preferencesController();
    void offerStored(const AppConfiguration& stored);
    void showRefusals();
    void presentUpdate();

    AppState& m_state;
    ConfigurationService& m_configuration;
    Services m_services;
    PopoverModel m_popoverModel;
    /// Of all windows. Made when the first one is shown.
    std::unique_ptr<QQmlEngine> m_engine;
    std::unique_ptr<PreferencesWindowController> m_preferencesController;
    std::unique_ptr<UpdateWindow> m_updateWindow;
    /// Last, so that nobody clicks into it while the tasks of the other windows end.
    Popover m_popover;
};

}  // namespace tidemark
