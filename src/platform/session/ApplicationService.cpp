#include "platform/session/ApplicationService.h"

namespace tidemark {

using namespace Qt::StringLiterals;

void ApplicationService::Activate(const QVariantMap& platformData) {
    QString token = platformData.value(u"activation-token"_s).toString();
    if (token.isEmpty())
        token = platformData.value(u"desktop-startup-id"_s).toString();
    // Queued, so that the caller gets its reply before the program draws its window.
    QMetaObject::invokeMethod(this, [this, token] { Q_EMIT activated(token); }, Qt::QueuedConnection);
}

void ApplicationService::Open(const QStringList& /*uris*/, const QVariantMap& platformData) {
    Activate(platformData);
}

void ApplicationService::ActivateAction(const QString& /*name*/, const QVariantList& /*parameter*/,
                                        const QVariantMap& platformData) {
    Activate(platformData);
}

}  // namespace tidemark
