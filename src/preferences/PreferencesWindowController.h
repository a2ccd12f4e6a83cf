#pragma once

#include <QFuture>
#include <QHash>
#include <QObject>
#include <QQmlEngine>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>

#include "config/AppConfiguration.h"
#include "platform/base/TaskScope.h"
#include "preferences/DesktopWindow.h"
#include "preferences/PreferencesModel.h"
#include "preferences/UpdatesSection.h"

namespace tidemark {

/// The preferences window, kept from the first opening on. Each opening edits a fresh copy of the stored
/// configuration; the copy and its views are gone when the window is closed. UI thread only.
class PreferencesWindowController final : public QObject {
    Q_OBJECT

public:
    /// What it works with; all of it outlives the controller.
    struct Services {
        QQmlEngine& engine;
        /// Reads the stored configuration: nothing when there is none that can be read.
        std::function<QFuture<std::optional<AppConfiguration>>()> load;
        /// What the window says above everything else when it is opened; may be empty.
        std::function<QString()> notice;
        std::function<std::unique_ptr<UpdatesSection>()> makeUpdates;
        std::function<void()> onOpenVercelTokens;
        std::function<void()> onOpenCloudflareTokens;
    };

    explicit PreferencesWindowController(Services services);
    ~PreferencesWindowController() override;

    /// Takes over the edited configuration, before the window closes. May be empty.
    std::function<void(const AppConfiguration&)> onSave;

    /// Loads the stored configuration and shows the window with it, in front of everything. A window that is
    /// open and edited keeps its edits, and only comes to the front. While the keyring waits for its user the
    /// window says so.
    void showWindow();
    /// The same with what has just been loaded.
    void showWindow(const std::optional<AppConfiguration>& stored);
    /// Shows a configuration that was stored meanwhile, unless somebody has edited the one that is there.
    void offerStored(const AppConfiguration& stored);
    /// Why the service refuses accounts' tokens, by account id: told on their cards, at once and at later
    /// openings.
    void setAccountErrors(const QHash<QString, QString>& errors);
    void close();

    [[nodiscard]] bool isShown() const { return m_window.isVisible(); }
    /// The window, for its place and its content.
    [[nodiscard]] DesktopWindow& window() { return m_window; }

Q_SIGNALS:
    /// The window was closed, and what it showed is gone.
    void closed();

private:
    /// Builds the editor anew, on a copy of the configuration or on the default one.
    void refreshContent(const std::optional<AppConfiguration>& stored);
    [[nodiscard]] QCoro::Task<> loadAndShow(int opening);
    /// Brings the window to the front if it has edits, instead of what was to be shown. Gives whether it has.
    bool presentEdits();
    void showWaiting();
    void dropContent();

    Services m_services;
    DesktopWindow m_window;
    std::unique_ptr<PreferencesModel> m_model;
    QHash<QString, QString> m_accountErrors;
    /// The number of openings so far: what was loaded for an earlier one is of no use.
    int m_opening = 0;
    /// While the configuration is loading.
    QTimer m_patience;
    /// Last, so that its tasks end first.
    TaskScope m_tasks;
};

}  // namespace tidemark
