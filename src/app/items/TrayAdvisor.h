#pragma once

#include <QString>
#include <QStringList>
#include <functional>

#include "notify/NotificationManager.h"
#include "platform/base/Clock.h"
#include "platform/base/TaskScope.h"
#include "platform/base/UserDefaults.h"
#include "platform/tray/StatusItem.h"

namespace tidemark {

/// Tells the user that the desktop has no tray for the program's item, and what to do about it.
///
/// It looks once, ten seconds after the start, because a panel may take that long at a login. The
/// notification is shown once on each desktop, not at every login, and again if a tray disappears for good.
/// When no notification is shown, the advice goes to `print`.
class TrayAdvisor {
public:
    /// All of it outlives the advisor.
    struct Services {
        Clock& clock;
        const StatusBar& statusBar;
        NotificationManager& notifications;
        UserDefaults& defaults;
        /// The value of XDG_CURRENT_DESKTOP; may be empty.
        QString desktop;
        /// Writes a line to the terminal.
        std::function<void(const QString&)> print;
    };

    explicit TrayAdvisor(Services services);

    /// Starts the wait. Call once.
    void start();

    /// A sentence that tells how to get a tray on the desktop.
    [[nodiscard]] static QString advice(const QString& desktop);

private:
    QCoro::Task<> lookOnce(std::stop_token stop);
    void tell();

    Services m_services;
    /// Last, so that its tasks end first.
    TaskScope m_tasks;
};

}  // namespace tidemark
