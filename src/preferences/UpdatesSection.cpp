#include "preferences/UpdatesSection.h"

#include <chrono>

namespace tidemark {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

UpdatesSection::UpdatesSection(UpdateController& controller, Clock& clock)
    : m_controller(controller),
      m_clock(clock),
      m_automatic(controller.controller() && controller.controller()->automaticallyChecksForUpdates()),
      m_status(controller.statusDescription()) {
    if (const Updater* updater = controller.controller())
        connect(updater, &Updater::canCheckForUpdatesChanged, this, &UpdatesSection::canCheckNowChanged);
}

QString UpdatesSection::notConfiguredText() {
    return u"Automatic updates aren't configured in this build."_s;
}

void UpdatesSection::setAutomatic(bool automatic) {
    if (automatic == m_automatic)
        return;
    m_automatic = automatic;
    if (Updater* updater = m_controller.controller())
        updater->setAutomaticallyChecksForUpdates(automatic);
    Q_EMIT automaticChanged();
}

bool UpdatesSection::canCheckNow() const {
    const Updater* updater = m_controller.controller();
    return updater && updater->canCheckForUpdates();
}

void UpdatesSection::checkNow() {
    m_controller.checkForUpdates();
    m_tasks.start([this](std::stop_token stop) { return refreshStatus(stop); });
}

QCoro::Task<> UpdatesSection::refreshStatus(std::stop_token stop) {
    co_await m_clock.sleep(1s, stop);
    if (stop.stop_requested())
        co_return;
    m_status = m_controller.statusDescription();
    Q_EMIT statusChanged();
}

}  // namespace tidemark
