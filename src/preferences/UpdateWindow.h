#pragma once

#include <QObject>
#include <QQmlEngine>

#include "preferences/DesktopWindow.h"
#include "preferences/UpdateModel.h"
#include "updates/Updater.h"

namespace tidemark {

/// The window in which the updater tells what it does and asks what it may do. Closing it, by whatever means,
/// ends what is under way. UI thread only.
class UpdateWindow final : public QObject {
    Q_OBJECT

public:
    /// Both outlive the window. `version` is that of the running program.
    UpdateWindow(Updater& updater, QQmlEngine& engine, const QString& version);
    ~UpdateWindow() override;

    /// Shows the updater's stage. What a scheduled check has found does not take the focus from what the user
    /// is doing.
    void present();

    [[nodiscard]] DesktopWindow& window() { return m_window; }

Q_SIGNALS:
    /// The window was closed, and what it showed is gone.
    void closed();

private:
    void follow();
    void end();

    Updater& m_updater;
    UpdateModel m_model;
    DesktopWindow m_window;
};

}  // namespace tidemark
