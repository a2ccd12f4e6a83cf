#include "sandbox/Seeding.h"

#include <algorithm>
#include <array>

#include "sandbox/Catalog.h"
#include "sandbox/Random.h"

using namespace Qt::StringLiterals;

namespace tidemark::sandbox {

namespace {

constexpr quint64 accountDraws = 1;
constexpr quint64 projectDraws = 2;
constexpr quint64 domainDraws = 3;
constexpr quint64 zoneDraws = 4;

constexpr qint64 minute = 60'000;
constexpr qint64 hour = 60 * minute;

/// How a project's newest deployment stands at the start: a picture with something of everything.
struct Opening {
    const char16_t* state;  ///< null for a project that was never deployed
    int ageMinutes;
    bool production;
};

constexpr std::array<Opening, 12> openings = {{
    {u"READY", 4, true},
    {u"READY", 26, true},
    {u"BUILDING", 0, true},
    {u"READY", 190, true},
    {u"ERROR", 11, false},
    {u"READY", 52, false},
    {u"READY", 1700, true},
    {u"READY", 5 * 1440, true},
    {u"QUEUED", 0, true},
    {u"CANCELED", 340, false},
    {u"READY", 2900, true},
    {nullptr, 0, true},
}};

QList<SandboxAccount> seedAccounts(const SandboxOptions& options) {
    QList<SandboxAccount> accounts;
    for (int index = 0; index < std::max(options.accounts, 1); ++index) {
        Random random = Random::stream(options.seed, accountDraws, static_cast<quint64>(index));
        const catalog::AccountName name = catalog::accountName(static_cast<quint64>(index));
        accounts.append({.name = name.name,
                         .slug = name.slug,
                         .teamId = index == 0 ? QString() : u"team_"_s + random.letters(24),
                         .token = u"sandbox-%1-%2"_s.arg(name.slug, random.letters(12))});
    }
    return accounts;
}

/// Every fourth project is a personal one, the teams take turns with the others.
int accountOf(int index, int accounts) {
    if (accounts == 1 || index % 4 == 3)
        return 0;
    return 1 + (index - index / 4) % (accounts - 1);
}

/// Moves a queued deployment to the state it has reached by now.
void age(Deployment& deployment, const QString& state, Random& random, qint64 now) {
    deployment.state = state;
    if (state == u"READY")
        deployment.ready = std::min(now, deployment.created + random.between(19'000, 169'000));
}

QString pastState(Random& random) {
    const double draw = random.real();
    if (draw < 0.86)
        return u"READY"_s;
    return draw < 0.95 ? u"ERROR"_s : u"CANCELED"_s;
}

/// The newest deployment as the opening says, and several before it.
void seedHistory(Project& project, const SandboxAccount& account, const Opening& opening, Random& random,
                 quint64 turn, qint64 now) {
    qint64 created = now - opening.ageMinutes * minute - random.between(12'000, 50'000);
    if (opening.ageMinutes > 0)
        created -= 200'000;  // so that even the slowest build has ended
    const int count = random.between(4, 14);
    for (int index = 0; index < count; ++index) {
        const bool newest = index == 0;
        const bool production = newest ? opening.production : random.chance(0.6);
        Deployment deployment = catalog::deployment(random, project, account, created, production, turn);
        turn += 11;
        age(deployment, newest ? QString::fromUtf16(opening.state) : pastState(random), random, now);
        if (deployment.state == u"READY")
            deployment.alias = catalog::aliases(project, account, deployment);
        project.deployments.append(deployment);
        created -= 10 * minute + static_cast<qint64>(random.exponential(9 * hour));
    }
}

Project seedProject(const SandboxOptions& options, const QList<SandboxAccount>& accounts, int index,
                    qint64 now) {
    Random random = Random::stream(options.seed, projectDraws, static_cast<quint64>(index));
    Project project;
    project.id = u"prj_"_s + random.letters(28);
    project.name = catalog::projectName(static_cast<quint64>(index));
    project.account = accountOf(index, static_cast<int>(accounts.size()));
    project.updated = now - 20 * minute * (index + 1) - random.between(0, 19 * 60'000);
    const SandboxAccount& account = accounts.at(project.account);
    project.domains = seedDomains(options.seed, static_cast<quint64>(index), project, account);

    constexpr int dozen = openings.size();
    // Beyond the first dozen nothing is under way, so that thousands of builds do not start at once.
    Opening opening = openings[static_cast<std::size_t>(index % dozen)];
    if (index >= dozen && opening.ageMinutes == 0 && opening.state != nullptr)
        opening = {u"READY", 90 + index % 700, true};
    project.quiet = opening.state == nullptr;
    if (!project.quiet)
        seedHistory(project, account, opening, random, options.seed + static_cast<quint64>(index) * 7, now);
    return project;
}

QList<Zone> seedZones(const SandboxOptions& options, const std::vector<std::unique_ptr<Project>>& projects) {
    QList<Zone> zones;
    quint64 index = 0;
    const auto add = [&](const QString& name, ZoneTraffic traffic) {
        Random random = Random::stream(options.seed, zoneDraws, index++);
        zones.append({.id = random.letters(32, "0123456789abcdef"_L1),
                      .name = name,
                      .traffic = traffic,
                      .dailyRequests = static_cast<qint64>(1500 + random.exponential(60'000))});
    };
    constexpr std::size_t matching = 6;
    for (std::size_t project = 0; project < std::min(matching, projects.size()); ++project) {
        add(projects[project]->name + u".example"_s,
            project == 4 ? ZoneTraffic::failing : ZoneTraffic::served);
        if (project == 1)
            add(u"paper-heron.example"_s, ZoneTraffic::served);
    }
    if (projects.size() > 1) {
        // A second domain of the same project that hardly anybody has found yet.
        add(projects[1]->name + u".test"_s, ZoneTraffic::served);
        zones.last().dailyRequests = 40;
    }
    add(u"old-campaign.example"_s, ZoneTraffic::refused);
    return zones;
}

}  // namespace

QList<Domain> seedDomains(quint64 seed, quint64 index, const Project& project,
                          const SandboxAccount& account) {
    Random random = Random::stream(seed, domainDraws, index);
    const QString label = catalog::hostLabel(project.name);
    const QString zone = account.slug + u".example"_s;
    QList<Domain> domains;
    if (random.chance(0.3))
        domains.append({.name = u"%1-staging.%2"_s.arg(label, zone), .gitBranch = u"staging"_s});
    domains.append({.name = label + catalog::defaultSuffix});
    if (random.chance(0.8)) {
        const bool own = random.chance(0.5);
        const QString custom = own ? label + u".example"_s : label + u'.' + zone;
        if (own)
            domains.append({.name = u"www."_s + custom, .redirect = custom});
        if (random.chance(0.25))
            domains.append({.name = u"new-"_s + custom, .verified = false});
        domains.append({.name = custom, .verified = !random.chance(0.1)});
    }
    return domains;
}

Seeds seedWorld(const SandboxOptions& options, qint64 now) {
    Seeds seeds;
    seeds.accounts = seedAccounts(options);
    seeds.cloudflareToken =
        u"sandbox-cloudflare-"_s + Random::stream(options.seed, accountDraws, ~quint64(0)).letters(12);
    for (int index = 0; index < options.projects; ++index)
        seeds.projects.push_back(std::make_unique<Project>(seedProject(options, seeds.accounts, index, now)));
    seeds.zones = seedZones(options, seeds.projects);
    return seeds;
}

}  // namespace tidemark::sandbox
