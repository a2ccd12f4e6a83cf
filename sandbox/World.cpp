#include "sandbox/World.h"

#include <QDateTime>
#include <algorithm>

#include "sandbox/Catalog.h"
#include "sandbox/Random.h"
#include "sandbox/Seeding.h"

using namespace Qt::StringLiterals;

namespace tidemark::sandbox {

namespace {

constexpr quint64 gapDraws = 9;
constexpr quint64 pushDraws = 10;
constexpr quint64 lifeDraws = 11;
constexpr quint64 madeDraws = 12;

/// Virtual seconds between two deployments of one project, on average.
constexpr double deploymentGap = 45 * 60;
constexpr qsizetype longestHistory = 40;

std::function<qint64()> clockOf(const SandboxOptions& options) {
    return options.now ? options.now : [] { return QDateTime::currentMSecsSinceEpoch(); };
}

bool underWay(const Deployment& deployment) {
    return deployment.state == u"QUEUED" || deployment.state == u"INITIALIZING" ||
           deployment.state == u"BUILDING";
}

QString drawOutcome(Random& random) {
    const double draw = random.real();
    if (draw < 0.84)
        return u"READY"_s;
    return draw < 0.95 ? u"ERROR"_s : u"CANCELED"_s;
}

/// The next state, and the virtual seconds until then.
struct NextStep {
    QString state;
    double wait = 0;
};

NextStep nextStep(const QString& state, const QString& outcome, Random& random) {
    const bool canceledEarly = outcome == u"CANCELED" && random.chance(0.5);
    if (state == u"QUEUED" && canceledEarly)
        return {outcome, 1 + 8 * random.real()};
    if (state == u"QUEUED")
        return {u"INITIALIZING"_s, 1 + 5 * random.real()};
    if (state == u"INITIALIZING")
        return {u"BUILDING"_s, 1 + 3 * random.real()};
    // Most builds are short, a few are long, failing ones end sooner.
    const double build = 16 + std::min(random.exponential(40), 200.0);
    return {outcome, outcome == u"READY" ? build : build * 0.6};
}

}  // namespace

World::World(const SandboxOptions& options)
    : m_seed(options.seed), m_now(clockOf(options)), m_timeLine(m_now(), options.speed) {
    Seeds seeds = seedWorld(options, m_now());
    m_accounts = std::move(seeds.accounts);
    m_cloudflareToken = std::move(seeds.cloudflareToken);
    m_zones = std::move(seeds.zones);
    m_projects = std::move(seeds.projects);
    for (const auto& project : m_projects)
        m_byId.insert(project->id, project.get());
    for (const auto& project : m_projects)
        if (!project->deployments.isEmpty() && underWay(project->deployments.first()))
            startLife(*project, project->deployments.first(), m_timeLine.now(), {});
    scheduleNextPush(m_timeLine.now());
}

World::~World() = default;

void World::advance() {
    m_timeLine.moveTo(m_now());
    while (!m_events.empty() && m_events.begin()->first <= m_timeLine.now()) {
        const auto due = m_events.extract(m_events.begin());
        happen(due.key(), due.mapped());
    }
}

void World::setSpeed(double speed) {
    advance();
    m_timeLine.setSpeed(speed);
}

std::optional<int> World::accountForToken(const QString& token) const {
    for (int index = 0; index < m_accounts.size(); ++index)
        if (m_accounts.at(index).token == token && !m_revoked.contains(token))
            return index;
    return std::nullopt;
}

bool World::cloudflareAccepts(const QString& token) const {
    return token == m_cloudflareToken && !m_revoked.contains(token);
}

void World::setRevoked(const QString& token, bool isRevoked) {
    if (isRevoked)
        m_revoked.insert(token);
    else
        m_revoked.remove(token);
}

const Project& World::projectAt(int index) const {
    return *m_projects.at(static_cast<std::size_t>(index));
}

const Project* World::project(const QString& idOrName) const {
    return find(idOrName);
}

const Project* World::projectOfDeployment(const QString& uid) const {
    const auto holds = [&uid](const auto& project) { return project->deployment(uid) != nullptr; };
    const auto found = std::find_if(m_projects.begin(), m_projects.end(), holds);
    return found == m_projects.end() ? nullptr : found->get();
}

QStringList World::projectIds(int account) const {
    QStringList ids;
    for (const auto& project : m_projects)
        if (project->account == account)
            ids.append(project->id);
    return ids;
}

QString World::addProject(const QString& name, int account) {
    Random random = Random::stream(m_seed, madeDraws, m_made);
    auto project = std::make_unique<Project>();
    project->id = u"prj_"_s + random.letters(28);
    project->name = name;
    project->account = std::clamp(account, 0, static_cast<int>(m_accounts.size()) - 1);
    project->updated = m_projects.empty() ? now() : std::max(now(), m_projects.front()->updated + 1);
    project->domains = seedDomains(m_seed + 1, m_made++, *project, m_accounts.at(project->account));
    project->quiet = true;
    m_byId.insert(project->id, project.get());
    m_projects.insert(m_projects.begin(), std::move(project));
    return m_projects.front()->id;
}

bool World::removeProject(const QString& idOrName) {
    const Project* project = find(idOrName);
    if (project == nullptr)
        return false;
    m_byId.remove(project->id);
    std::erase_if(m_projects, [project](const auto& each) { return each.get() == project; });
    return true;
}

std::optional<QString> World::push(const QString& idOrName, const NewDeployment& fields) {
    advance();
    Project* project = find(idOrName);
    if (project == nullptr)
        return std::nullopt;
    Random random = Random::stream(m_seed, madeDraws, m_made++);
    Deployment made = catalog::deployment(random, *project, m_accounts.at(project->account), now(),
                                          fields.production, m_made);
    if (!fields.uid.isEmpty())
        made.uid = fields.uid;
    if (fields.commit)
        made.commit = fields.commit;
    Deployment& deployment = prepend(*project, std::move(made));
    if (fields.state.isEmpty()) {
        startLife(*project, deployment, m_timeLine.now(), fields.outcome);
        return deployment.uid;
    }
    enter(*project, deployment, fields.state, now());
    return deployment.uid;
}

bool World::setState(const QString& idOrName, const QString& state) {
    advance();
    Project* project = find(idOrName);
    if (project == nullptr || project->deployments.isEmpty())
        return false;
    Deployment& newest = project->deployments.first();
    std::erase_if(m_events, [&](const auto& event) { return event.second.uid == newest.uid; });
    enter(*project, newest, state, now());
    return true;
}

std::optional<QString> World::redeploy(const QString& uid) {
    advance();
    const Project* found = projectOfDeployment(uid);
    if (found == nullptr)
        return std::nullopt;
    Project* project = m_byId.value(found->id);
    const Deployment* source = project->deployment(uid);
    NewDeployment fields{.production = source->target == u"production", .commit = source->commit};
    return push(project->id, fields);
}

void World::scheduleNextPush(double after) {
    Random random = Random::stream(m_seed, gapDraws, m_pushes);
    const double gap = deploymentGap / std::max(projectCount(), 1);
    m_events.emplace(after + random.exponential(gap), Event{});
}

void World::happen(double moment, const Event& event) {
    if (event.projectId.isEmpty()) {
        pushSomewhere(moment);
        return;
    }
    Project* project = m_byId.value(event.projectId);
    Deployment* deployment = project == nullptr ? nullptr : project->deployment(event.uid);
    if (deployment == nullptr)
        return;
    enter(*project, *deployment, event.state, m_timeLine.wallAt(moment));
    if (underWay(*deployment))
        startLife(*project, *deployment, moment, event.outcome);
}

void World::startLife(const Project& project, const Deployment& deployment, double moment,
                      const QString& outcome) {
    // Drawn from the deployment itself: a push by hand elsewhere does not change how this one fares.
    Random random = Random::stream(m_seed, lifeDraws, seedOf(deployment.uid + deployment.state));
    const QString end = outcome.isEmpty() ? drawOutcome(random) : outcome;
    const NextStep next = nextStep(deployment.state, end, random);
    m_events.emplace(moment + next.wait, Event{project.id, deployment.uid, next.state, end});
}

void World::pushSomewhere(double moment) {
    Random random = Random::stream(m_seed, pushDraws, m_pushes++);
    scheduleNextPush(moment);

    // From a drawn project on, the first one that is free.
    const int start = random.below(projectCount());
    for (int offset = 0; offset < projectCount(); ++offset) {
        Project& project = *m_projects.at(static_cast<std::size_t>((start + offset) % projectCount()));
        if (project.quiet || (!project.deployments.isEmpty() && underWay(project.deployments.first())))
            continue;
        const Deployment& made =
            prepend(project, catalog::deployment(random, project, m_accounts.at(project.account),
                                                 m_timeLine.wallAt(moment), random.chance(0.6), m_pushes));
        startLife(project, made, moment, {});
        return;
    }
}

Deployment& World::prepend(Project& project, Deployment deployment) {
    project.deployments.prepend(std::move(deployment));
    if (project.deployments.size() > longestHistory)
        project.deployments.resize(longestHistory);
    return project.deployments.first();
}

void World::enter(Project& project, Deployment& deployment, const QString& state, qint64 wallMs) {
    deployment.state = state;
    deployment.ready = state == u"READY" ? std::max(wallMs, deployment.created) : 0;
    deployment.alias = state == u"READY"
                           ? catalog::aliases(project, m_accounts.at(project.account), deployment)
                           : QStringList();
}

Project* World::find(const QString& idOrName) const {
    if (Project* byId = m_byId.value(idOrName); byId != nullptr)
        return byId;
    if (idOrName.isEmpty())
        return nullptr;
    const auto named = std::find_if(m_projects.begin(), m_projects.end(),
                                    [&](const auto& project) { return project->name == idOrName; });
    return named == m_projects.end() ? nullptr : named->get();
}

}  // namespace tidemark::sandbox
