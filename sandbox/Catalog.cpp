#include "sandbox/Catalog.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace tidemark::sandbox::catalog {

namespace {

constexpr std::array accountNames = {u"Personal", u"Paper Heron", u"Northlight Labs", u"Tin Kettle",
                                     u"Slow Harbour"};
constexpr std::array accountSlugs = {u"juno", u"paper-heron", u"northlight", u"tin-kettle", u"slow-harbour"};

// The order decides which account, state and zone each gets in a small world: see Seeding.cpp.
constexpr std::array companyProjects = {u"storefront",     u"docs",          u"checkout-api",   u"journal",
                                        u"booking-widget", u"admin-console", u"marketing-site", u"recipes",
                                        u"image-proxy",    u"status-board",  u"newsletter",     u"trail_log"};

constexpr std::array products = {u"atlas",   u"beacon",  u"cedar",   u"drift",   u"ember",   u"fable",
                                 u"grove",   u"harbour", u"inkwell", u"juniper", u"kestrel", u"lantern",
                                 u"meadow",  u"nimbus",  u"orchard", u"pebble",  u"quarry",  u"rowan",
                                 u"saffron", u"thicket", u"umber",   u"velvet",  u"willow",  u"yarrow",
                                 u"zephyr",  u"basalt",  u"copper",  u"dune",    u"fern",    u"glacier"};
constexpr std::array kinds = {u"web",       u"api",        u"docs",     u"admin",   u"landing",
                              u"dashboard", u"mobile-web", u"portal",   u"gateway", u"preview",
                              u"search",    u"payments",   u"accounts", u"blog",    u"widgets",
                              u"studio",    u"jobs",       u"auth",     u"assets",  u"playground"};

constexpr std::array frameworks = {u"nextjs", u"astro", u"sveltekit", u"vite", u"nuxtjs", u"remix", u"hugo"};

constexpr std::array branches = {u"feat/guest-checkout",
                                 u"feat/dark-mode",
                                 u"fix/flaky-webhook",
                                 u"chore/upgrade-deps",
                                 u"fix/cart-rounding",
                                 u"feat/search-filters",
                                 u"docs/quick-start",
                                 u"refactor/session-store",
                                 u"renovate/typescript-5.x",
                                 u"feat/saved-views",
                                 u"fix/safari-layout",
                                 u"spike/edge-cache",
                                 u"release/2024.3",
                                 u"feat/i18n-ja",
                                 u"hotfix/tax-rates",
                                 u"feat/very-long-branch-name-that-nobody-"
                                 u"dares-to-rename-any-more"};

constexpr std::array messages = {
    u"Keep the cart when the session is renewed",
    u"Fix rounding of tax in the order summary",
    u"Bump typescript from 5.4.2 to 5.4.5",
    u"Show the delivery estimate before the address step",
    u"Ship the spring collection 🌱\n\nThe photos of the last three items are still placeholders;\nthey "
    u"follow on Monday.",
    u"Cache product images at the edge for a day",
    u"Retry the webhook when the queue is busy",
    u"Make the date picker usable with a keyboard",
    u"Drop the old banner",
    u"日本語の翻訳を追加",
    u"Load the map only when it scrolls into view",
    u"Translate the booking flow into German",
    u"Do not log out on a 403 from the avatar service",
    u"Merge pull request #482 from feat/saved-views",
    u"Größen in Zoll & cm – für alle Länder",
    u"Explain rate limits in the quick start",
    u"Move feature flags to the build",
    u"fix: trailing slash on preview links",
    u"feat(search): rank exact matches first",
    u"Fix <title> when the name holds \"quotes\" & tags\n\nCloses #77",
    u"chore: regenerate the lock file",
    u"Speed up the first paint of the catalogue",
    u"Revert \"Load fonts from our own host\"",
    u"Add a print style sheet for invoices",
    u"✨ Saved views, part 2 of 3\n\n* store them per user\n* share by link\n\nCo-authored-by: Ida",
    u"Hide sold-out sizes behind a switch",
    u"Correct the contrast of disabled buttons",
    u"wip",
    u"Wait for consent before loading analytics",
    u"Rewrite the import so that a single broken row no longer throws away the whole file, report every bad "
    u"row "
    u"with its line and column, and keep the order of the ones that were fine"};

template <std::size_t size>
QString pick(Random& random, const std::array<const char16_t*, size>& choices) {
    return QString::fromUtf16(choices[static_cast<std::size_t>(random.below(static_cast<int>(size)))]);
}

template <std::size_t size>
QString at(const std::array<const char16_t*, size>& choices, quint64 index) {
    return QString::fromUtf16(choices[index % size]);
}

}  // namespace

AccountName accountName(quint64 index) {
    const quint64 round = index / accountNames.size();
    if (round == 0)
        return {at(accountNames, index), at(accountSlugs, index)};
    return {u"%1 %2"_s.arg(at(accountNames, index)).arg(round + 1),
            u"%1-%2"_s.arg(at(accountSlugs, index)).arg(round + 1)};
}

QString projectName(quint64 index) {
    if (index < companyProjects.size())
        return at(companyProjects, index);
    const quint64 rest = index - companyProjects.size();
    const QString name = at(products, rest) + u'-' + at(kinds, rest / products.size() + rest);
    const quint64 round = rest / (products.size() * kinds.size());
    return round == 0 ? name : u"%1-%2"_s.arg(name).arg(round + 1);
}

QString framework(Random& random) {
    return pick(random, frameworks);
}

Commit commit(Random& random, bool production, quint64 turn) {
    Commit commit;
    commit.message = at(messages, turn);
    commit.ref = production ? u"main"_s : pick(random, branches);
    commit.sha = random.hex(40);
    return commit;
}

Deployment deployment(Random& random, const Project& project, const SandboxAccount& account, qint64 created,
                      bool production, quint64 turn) {
    Deployment made;
    made.uid = u"dpl_"_s + random.letters(28);
    made.url = hostLabel(project.name) + u'-' + random.lowerLetters(9) + u'-' + account.slug + defaultSuffix;
    made.state = u"QUEUED"_s;
    made.created = created;
    if (production)
        made.target = u"production"_s;
    made.inspectorUrl = u"https://vercel.com/%1/%2/%3"_s.arg(account.slug, project.name, made.uid.mid(4));
    // A deployment from the command line knows nothing of git.
    if (!random.chance(0.06))
        made.commit = commit(random, production, turn);
    return made;
}

QStringList aliases(const Project& project, const SandboxAccount& account, const Deployment& deployment) {
    const QString label = hostLabel(project.name);
    if (deployment.target != u"production") {
        const QString branch = deployment.commit ? hostLabel(deployment.commit->ref) : QString();
        if (branch.isEmpty())
            return {};
        return {u"%1-git-%2-%3"_s.arg(label, branch, account.slug) + defaultSuffix};
    }
    QStringList hosts = {label + defaultSuffix};
    for (const Domain& domain : project.domains)
        if (domain.gitBranch.isNull() && domain.redirect.isNull() && domain.verified &&
            !domain.name.endsWith(defaultSuffix))
            hosts.append(domain.name);
    hosts.append(u"%1-git-main-%2"_s.arg(label, account.slug) + defaultSuffix);
    return hosts;
}

QString hostLabel(const QString& text) {
    QString label = text.toLower();
    std::replace_if(
        label.begin(), label.end(),
        [](QChar letter) { return letter.unicode() >= 128 || !letter.isLetterOrNumber(); }, u'-');
    return label.left(40);
}

}  // namespace tidemark::sandbox::catalog
