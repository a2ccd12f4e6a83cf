#include "cloudflare/load/AnalyticsLoader.h"

#include <utility>

namespace tidemark {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto freshness = 300s;
constexpr int daysPerZone = 7;

/// Lets the state say that a load is under way for as long as this lives.
class LoadingMark {
public:
    explicit LoadingMark(AppState* state) : m_state(state) { m_state->setIsLoadingAnalytics(true); }
    LoadingMark(const LoadingMark&) = delete;
    LoadingMark& operator=(const LoadingMark&) = delete;
    ~LoadingMark() {
        if (m_state)
            m_state->setIsLoadingAnalytics(false);
    }

private:
    QPointer<AppState> m_state;
};

}  // namespace

AnalyticsLoader::AnalyticsLoader(AppState& state, HttpClient& http, const Clock& clock, QUrl baseURL)
    : m_state(&state), m_http(&http), m_clock(&clock), m_baseURL(std::move(baseURL)) {}

QCoro::Task<> AnalyticsLoader::load(AnalyticsReload reload, std::stop_token stop) const {
    return run(*this, reload, std::move(stop));
}

QCoro::Task<> AnalyticsLoader::run(AnalyticsLoader loader, AnalyticsReload reload, std::stop_token stop) {
    AppState* const state = loader.m_state;
    // Up to the mark nothing waits, so two loads cannot both come so far.
    if (!state || (reload == AnalyticsReload::ifStale && loader.isFresh()) || state->isLoadingAnalytics())
        co_return;
    const QString token = state->config() ? state->config()->cloudflareToken : QString();
    if (token.isEmpty()) {
        loader.fail(u"No Cloudflare token.\nAdd one in Preferences."_s);
        co_return;
    }
    const LoadingMark mark(state);
    const CloudflareAPIClient client(*loader.m_http, *loader.m_clock, loader.m_baseURL, token);
    const QList<VercelProject> projects = state->trackedProjects();
    const auto zones = co_await client.fetchZones(stop);
    if (!zones) {
        loader.fail(description(zones.error()));
        co_return;
    }
    const QList<ZoneAnalytics> cards = co_await fetchCards(client, *zones, projects, stop);
    loader.publish(cards);
}

QCoro::Task<QList<ZoneAnalytics>> AnalyticsLoader::fetchCards(CloudflareAPIClient client, QList<Zone> zones,
                                                              QList<VercelProject> projects,
                                                              std::stop_token stop) {
    QList<ZoneAnalytics> cards;
    for (const auto& zone : std::as_const(zones)) {
        const auto project = CloudflareAPIClient::matchProject(zone, projects);
        if (!project)
            continue;
        const auto days = co_await client.fetchAnalytics(zone.id, daysPerZone, stop);
        if (days)
            cards.append({.zone = zone, .projectName = project->name, .days = *days});
    }
    co_return cards;
}

bool AnalyticsLoader::isFresh() const {
    const auto fetchedAt = m_state->analyticsFetchedAt();
    if (!fetchedAt)
        return false;
    // A time to come is from before the clock was set back, and says nothing.
    const auto age = m_clock->now() - *fetchedAt;
    return age >= 0s && age < freshness;
}

void AnalyticsLoader::publish(const QList<ZoneAnalytics>& cards) const {
    if (!m_state)
        return;
    m_state->setAnalyticsCards(cards);
    m_state->setAnalyticsError(std::nullopt);
    m_state->setAnalyticsFetchedAt(m_clock->now());
}

void AnalyticsLoader::fail(const QString& error) const {
    if (!m_state)
        return;
    m_state->setAnalyticsError(error);
    if (m_state->analyticsCards().isEmpty())
        m_state->setAnalyticsFetchedAt(std::nullopt);
}

}  // namespace tidemark
