#pragma once

#include <QCoroTask>
#include <QUrl>
#include <stop_token>

#include "platform/http/HttpClient.h"

namespace tidemark {

/// The health of the platform according to its public status page.
enum class VercelStatusLevel : quint8 { ok, minor, major, critical, unknown };

/// Client of the status page. The HTTP client must outlive its requests.
class VercelStatusClient {
public:
    VercelStatusClient(HttpClient& http, QUrl url);

    /// The level; `unknown` after any failure. The HTTP status is ignored.
    [[nodiscard]] QCoro::Task<VercelStatusLevel> fetch(std::stop_token stop) const;

private:
    HttpClient* m_http;
    QUrl m_url;
};

}  // namespace tidemark
