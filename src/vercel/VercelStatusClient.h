#pragma once

#include <QCoroTask>
#include <QUrl>
#include <stop_token>

#include "platform/http/HttpClient.h"

namespace tidemark {

/// The health of the platform, as its public status page tells it.
enum class VercelStatusLevel : quint8 { ok, minor, major, critical, unknown };

/// Asks the status page. The HTTP client must outlive the request.
class VercelStatusClient {
public:
    VercelStatusClient(HttpClient& http, QUrl url);

    /// The level; `unknown` for whatever goes wrong. The HTTP status is not looked at.
    [[nodiscard]] QCoro::Task<VercelStatusLevel> fetch(std::stop_token stop) const;

private:
    HttpClient* m_http;
    QUrl m_url;
};

}  // namespace tidemark
