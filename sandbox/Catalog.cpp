#include "sandbox/Catalog.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace tidemark::sandbox::catalog {

namespace {

const QStringList accountNames{u"Personal"_s, u"Paper Heron"_s, u"Northlight Labs"_s, u"Tin Kettle"_s,
                               u"Slow Harbour"_s};

// The order decides which account, state and zone each gets in a small world: see Seeding.cpp.
const QStringList companyProjects =
    u"storefront docs checkout-api journal booking-widget admin-console marketing-site recipes image-proxy "
    u"status-board newsletter trail_log"_s.split(u' ');
const QStringList products =
    u"atlas beacon cedar drift ember fable grove harbour inkwell juniper kestrel lantern meadow nimbus "
    u"orchard pebble quarry rowan saffron thicket umber velvet willow yarrow zephyr basalt copper dune fern glacier"_s
        .split(u' ');
const QStringList kinds =
    u"web api docs admin landing dashboard mobile-web portal gateway preview search payments accounts blog "
    u"widgets studio jobs auth assets playground"_s.split(u' ');
const QStringList branches =
    u"feat/guest-checkout feat/dark-mode fix/flaky-webhook chore/upgrade-deps fix/cart-rounding "
    u"docs/quick-start renovate/typescript-5.x release/2024.3 feat/i18n-ja hotfix/tax-rates "
    u"feat/very-long-branch-name-that-nobody-dares-to-rename-any-more"_s.split(u' ');

const QStringList messages{
    u"Keep the cart when the session is renewed"_s,
    u"Fix rounding of tax in the order summary"_s,
    u"Bump typescript from 5.4.2 to 5.4.5"_s,
    u"Ship the spring collection 🌱\n\nThe photos of the last three items follow on Monday."_s,
    u"Cache product images at the edge for a day"_s,
    u"Make the date picker usable with a keyboard"_s,
    u"Drop the old banner"_s,
    u"日本語の翻訳を追加"_s,
    u"Do not log out on a 403 from the avatar service"_s,
    u"Merge pull request #482 from feat/saved-views"_s,
    u"Größen in Zoll & cm – für alle Länder"_s,
    u"feat(search): rank exact matches first"_s,
    u"Fix <title> when the name holds \"quotes\" & tags\n\nCloses #77"_s,
    u"chore: regenerate the lock file"_s,
    u"✨ Saved views, part 2 of 3\n\n* store them per user\n* share by link\n\nCo-authored-by: Ida"_s,
    u"wip"_s,
    u"Rewrite the import so that a single broken row no longer throws away the whole file, report every bad "
    u"row with its line and column, and keep the order of the ones that were fine"_s};

constexpr auto hexDigits = "0123456789abcdef"_L1;

QString at(const QStringList& choices, quint64 index) {
    return choices.at(static_cast<qsizetype>(index % static_cast<quint64>(choices.size())));
}

}  // namespace

AccountName accountName(quint64 index) {
    const quint64 round = index / static_cast<quint64>(accountNames.size());
    QString name = at(accountNames, index);
    if (round > 0)
        name += u" %1"_s.arg(round + 1);
    return {name, index == 0 ? u"juno"_s : hostLabel(name)};
}

QString projectName(quint64 index) {
    const auto dozen = static_cast<quint64>(companyProjects.size());
    if (index < dozen)
        return at(companyProjects, index);
    const quint64 rest = index - dozen;
    const auto count = static_cast<quint64>(products.size());
    const QString name = at(products, rest) + u'-' + at(kinds, rest / count + rest);
    const quint64 round = rest / (count * static_cast<quint64>(kinds.size()));
    return round == 0 ? name : u"%1-%2"_s.arg(name).arg(round + 1);
}

Commit commit(Random& random, bool production, quint64 turn) {
    Commit commit;
    commit.message = at(messages, turn);
    commit.ref = production ? u"main"_s : branches.at(random.below(static_cast<int>(branches.size())));
    commit.sha = random.letters(40, hexDigits);
    return commit;
}

Deployment deployment(Random& random, const Project& project, const SandboxAccount& account, qint64 created,
                      bool production, quint64 turn) {
    Deployment made;
    made.uid = u"dpl_"_s + random.letters(28);
    made.url = hostLabel(project.name) + u'-' + random.letters(9, "0123456789abcdefghijklmnopqrstuvwxyz"_L1) +
               u'-' + account.slug + defaultSuffix;
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
    static const QRegularExpression other(u"[^a-z0-9]"_s);
    return text.toLower().replace(other, u"-"_s).left(40);
}

}  // namespace tidemark::sandbox::catalog
