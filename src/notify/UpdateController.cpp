#include "notify/UpdateController.h"

#include <utility>

#include "presentation/DateFormat.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

bool isSet(const QString& value, QStringView placeholder) {
    return !value.isEmpty() && value != placeholder;
}

}  // namespace

UpdateController::UpdateController(Bundle bundle,
                                   const std::function<std::unique_ptr<Updater>()>& makeUpdater)
    : m_bundle(std::move(bundle)) {
    if (!isConfigured())
        return;
    m_controller = makeUpdater();
    m_controller->start();
}

bool UpdateController::isConfigured() const {
    return isSet(m_bundle.feedUrl, u"REPLACE_WITH_APPCAST_URL") &&
           isSet(m_bundle.publicKey, u"REPLACE_WITH_SPARKLE_PUBLIC_KEY");
}

QString UpdateController::statusDescription() const {
    if (!isConfigured())
        return u"Updates aren't configured in this build."_s;
    const auto date = m_controller ? m_controller->lastUpdateCheckDate() : std::nullopt;
    return date ? u"Last checked "_s + DateFormat::absolute(*date) + u'.' : u"Not checked yet."_s;
}

void UpdateController::checkForUpdates() {
    if (m_controller)
        m_controller->checkForUpdates();
}

}  // namespace tidemark
