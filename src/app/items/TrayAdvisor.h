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

/// Tells the user, in words, when the desktop has no tray to show the program in, and what to do about it.
///
/// Some seconds after the start it looks once; a panel that comes in that time, or comes later, is nothing to
/// talk about. The notification is shown once on each desktop, not at every login, and again when a tray that
/// was there has gone. Whenever none is shown the words go to `print`.
class TrayAdvisor {
public:
    /// All of it outlives the advisor.
    struct Services {
        Clock& clock;
        const StatusBar& statusBar;
        NotificationManager& notifications;
        UserDefaults& defaults;
        /// What the desktop calls itself, as in XDG_CURRENT_DESKTOP; may be empty.
        QString desktop;
        /// For whoever started the program in a terminal. Given whole lines.
        std::function<void(const QString&)> print;
    };

    explicit TrayAdvisor(Services services);

    /// Begins to wait. Call once.
    void start();

    /// What to do to get a tray on the desktop: a sentence.
    [[nodiscard]] static QString advice(const QString& desktop);

private:
    QCoro::Task<> lookOnce(std::stop_token stop);
    void tell();

    Services m_services;
    /// Last, so that its tasks end first.
    TaskScope m_tasks;
};

}  // namespace tidemark
