#pragma once

#include <QCoroTask>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <stop_token>

#include "cloudflare/CloudflareAPIClient.h"
#include "state/AppState.h"

namespace tidemark {

/// Loads the traffic of the tracked projects into the state's analytics fields, where everything about it is
/// kept. A plain value: a load works on a copy of its own, so a loader may be dropped while a load runs. The
/// HTTP client and the clock must outlive the load; when the state goes, the load ends at its next wait.
class AnalyticsLoader {
public:
    AnalyticsLoader(AppState& state, HttpClient& http, const Clock& clock, QUrl baseURL);

    /// Fetches the zones, then the traffic of each that a tracked project is called like, one request at a
    /// time, and publishes all cards at once. Analytics are fresh for 300 seconds after a load that got the
    /// zones. Does nothing while another load runs. Every outcome is in the state; "loading" is over
    /// whichever way this ends.
    ///
    /// A stop ends the requests that are left, and they count as failed ones: before the zones have come
    /// that is an error, after that a zone without a card.
    [[nodiscard]] QCoro::Task<> load(AnalyticsReload reload, std::stop_token stop) const;

private:
    static QCoro::Task<> run(AnalyticsLoader loader, AnalyticsReload reload, std::stop_token stop);
    static QCoro::Task<QList<ZoneAnalytics>> fetchCards(CloudflareAPIClient client, QList<Zone> zones,
                                                        QList<VercelProject> projects, std::stop_token stop);

    [[nodiscard]] bool isFresh() const;
    void publish(const QList<ZoneAnalytics>& cards) const;
    void fail(const QString& error) const;

    QPointer<AppState> m_state;
    HttpClient* m_http;
    const Clock* m_clock;
    QUrl m_baseURL;
};

}  // namespace tidemark
