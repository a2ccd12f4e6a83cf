#include "sandbox/http/Exchange.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace tidemark::sandbox {

QString Request::queryValue(QLatin1StringView name) const {
    for (const auto& [key, value] : query)
        if (key == name)
            return value;
    return {};
}

QStringList Request::segments() const {
    QStringList decoded;
    for (const QString& segment : path.split(u'/', Qt::SkipEmptyParts))
        decoded.append(QString::fromUtf8(QByteArray::fromPercentEncoding(segment.toUtf8())));
    return decoded;
}

QString Request::bearerToken() const {
    constexpr QByteArrayView scheme = "Bearer ";
    return authorization.startsWith(scheme) ? QString::fromUtf8(authorization.mid(scheme.size())) : QString();
}

Reply Reply::json(const QJsonObject& document, int status) {
    return {.status = status, .body = QJsonDocument(document).toJson(QJsonDocument::Compact)};
}

}  // namespace tidemark::sandbox
