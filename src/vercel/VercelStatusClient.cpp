#include "vercel/VercelStatusClient.h"

#include <utility>

#include "platform/base/JsonReader.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

VercelStatusLevel levelOf(const QString& indicator) {
    if (indicator == "none"_L1)
        return VercelStatusLevel::ok;
    if (indicator == "minor"_L1)
        return VercelStatusLevel::minor;
    if (indicator == "major"_L1)
        return VercelStatusLevel::major;
    if (indicator == "critical"_L1)
        return VercelStatusLevel::critical;
    return VercelStatusLevel::unknown;
}

}  // namespace

VercelStatusClient::VercelStatusClient(HttpClient& http, QUrl url) : m_http(&http), m_url(std::move(url)) {}

QCoro::Task<VercelStatusLevel> VercelStatusClient::fetch(std::stop_token stop) const {
    static constexpr auto run = [](HttpClient* http, QUrl url,
                                   std::stop_token stopToken) -> QCoro::Task<VercelStatusLevel> {
        HttpRequest request{.url = url};
        const HttpResult result = co_await http->send(std::move(request), std::move(stopToken));
        if (!result)
            co_return VercelStatusLevel::unknown;
        const auto indicator = JsonReader::decodeObject(result->body, [](JsonReader& root) {
            return root.requiredObject(
                "status"_L1, [](JsonReader& status) { return status.requiredString("indicator"_L1); });
        });
        co_return indicator ? levelOf(*indicator) : VercelStatusLevel::unknown;
    };
    return run(m_http, m_url, std::move(stop));
}

}  // namespace tidemark
