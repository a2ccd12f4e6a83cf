#include "app/Endpoints.h"

#include <QString>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

const QString statusPath = u"/api/v2/status.json"_s;

QUrl at(QUrl base, const QString& path) {
    base.setPath(path);
    return base;
}

}  // namespace

Endpoints Endpoints::production() {
    return {.vercelApi = QUrl(u"https://api.vercel.com"_s),
            .vercelStatus = at(QUrl(u"https://www.vercel-status.com"_s), statusPath),
            .cloudflareApi = QUrl(u"https://api.cloudflare.com"_s)};
}

Endpoints Endpoints::below(const QUrl& base) {
    return {.vercelApi = base, .vercelStatus = at(base, statusPath), .cloudflareApi = base};
}

}  // namespace tidemark
