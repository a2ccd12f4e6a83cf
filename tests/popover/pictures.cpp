#include <QDir>
#include <QGuiApplication>
#include <functional>

#include "tests/popover/Person.h"

// Writes a picture of each screen and state of the popover: popover-pictures FOLDER. QT_SCALE_FACTOR gives
// the scale.

namespace {

using namespace tidemark;

QString folder;

void save(PopoverView& view, const QString& name) {
    QTest::qWait(650);
    view.grabWindow().save(folder + u'/' + name + u".png"_s);
}

void fill(Scene& scene) {
    scene.track({u"acme-storefront"_s, u"billing-api"_s, u"docs"_s, u"landing-page-2026"_s,
                 u"a-project-with-a-name-that-is-much-too-long-for-one-line"_s, u"empty"_s, u"new"_s,
                 u"שלום עולם"_s, u"ポートフォリオサイト"_s, u"zeta"_s});
    auto ready = scene.deployment(u"READY"_s, 12min);
    ready.alias = QList<QString>{u"storefront.example.com"_s};
    auto older = scene.deployment(u"ERROR"_s, 3h);
    older.meta->githubCommitRef = u"feature/checkout-with-a-really-long-branch-name"_s;
    auto preview = scene.deployment(u"CANCELED"_s, 26h);
    preview.meta = std::nullopt;
    scene.poll(u"acme-storefront"_s,
               {ready, older, preview, scene.deployment(u"READY"_s, 72h), scene.deployment(u"READY"_s, 99h)});
    scene.poll(u"billing-api"_s, {scene.deployment(u"BUILDING"_s, 20s)});
    scene.poll(u"docs"_s, {scene.deployment(u"ERROR"_s, 30h)});
    scene.poll(u"landing-page-2026"_s, {scene.deployment(u"QUEUED"_s, 5s)});
    auto longDomain = ready;
    longDomain.alias = QList<QString>{u"a-very-long-domain-name-that-goes-on-and-on.staging.example.com"_s};
    scene.poll(u"a-project-with-a-name-that-is-much-too-long-for-one-line"_s, {longDomain});
    scene.poll(u"empty"_s, {});
    scene.poll(u"שלום עולם"_s, {scene.deployment(u"INITIALIZING"_s, 40s)});
    scene.poll(u"ポートフォリオサイト"_s, {scene.deployment(u"CANCELED"_s, 2h)});
    scene.state.setError(u"zeta"_s, u"Server error (500)"_s);
    scene.state.setVercelPlatformStatus(VercelStatusLevel::ok);
}

void picture(const QString& name, const std::function<void(Person&)>& prepare,
             const std::function<void(Person&)>& act = {}) {
    Person scene;
    prepare(scene);
    scene.settle();
    scene.show();
    if (act)
        act(scene);
    save(*scene.view, name);
}

void hover(Person& scene, QPoint place) {
    QTest::mouseMove(scene.view.get(), place + QPoint(3, 3));
    QTest::mouseMove(scene.view.get(), place);
}

}  // namespace

int main(int argc, char** argv) {
    PopoverView::prepareApplication();
    const QGuiApplication application(argc, argv);
    QAccessible::setActive(true);
    folder = QString::fromLocal8Bit(argc > 1 ? argv[1] : ".");
    QDir().mkpath(folder);

    picture(u"loading"_s, [](Scene& scene) { scene.state.setIsLoadingProjects(true); });
    picture(u"nothing-tracked"_s, [](Scene&) {});
    picture(u"list"_s, fill);
    picture(u"hover"_s, fill, [](Person& scene) { hover(scene, {100, 115}); });
    picture(u"domain-hover"_s, fill, [](Person& scene) { hover(scene, {100, 290}); });
    picture(
        u"expanded"_s,
        [](Scene& scene) {
            fill(scene);
            scene.state.setError(u"acme-storefront"_s, u"The request timed out."_s);
            scene.state.setProductionOnly(true);
        },
        [](Person& scene) { scene.model.toggleExpanded(u"acme-storefront"_s); });
    picture(
        u"banner"_s,
        [](Scene& scene) {
            scene.track({u"docs"_s, u"site"_s});
            scene.poll(u"docs"_s, {scene.deployment(u"READY"_s, 20min)});
            scene.state.setError(u"docs"_s, u"Cannot connect to the server."_s);
            scene.state.setError(u"site"_s, u"Cannot connect to the server."_s);
        },
        [](Person& scene) {
            QTest::keyClick(scene.view.get(), Qt::Key_Down);
            QTest::keyClick(scene.view.get(), Qt::Key_Return);
        });
    picture(
        u"all-live"_s,
        [](Scene& scene) {
            scene.track({u"docs"_s});
            scene.poll(u"docs"_s, {scene.deployment(u"READY"_s, 20min)});
        },
        [](Person& scene) {
            QTest::keyClick(scene.view.get(), Qt::Key_Tab);
            QTest::keyClick(scene.view.get(), Qt::Key_Tab);
            QTest::keyClick(scene.view.get(), Qt::Key_Tab);
        });
    const auto withIgnored = [](Scene& scene) {
        fill(scene);
        scene.state.setTracked(u"docs"_s, false);
        scene.state.setTracked(u"zeta"_s, false);
        scene.state.setIndividual(u"billing-api"_s, true);
    };
    picture(u"manage"_s, withIgnored, [](Person& scene) {
        scene.openManage();
        hover(scene, {100, 160});
    });
    picture(u"manage-filtered"_s, withIgnored, [](Person& scene) {
        scene.openManage();
        scene.type(u"O"_s);
        QTest::keyClick(scene.view.get(), Qt::Key_Down);
    });
    picture(u"manage-without-match"_s, withIgnored, [](Person& scene) {
        scene.openManage();
        scene.type(u"nowhere"_s);
    });
    const auto analytics = [](Person& scene) { scene.click(u"Analytics"_s); };
    picture(u"analytics-loading"_s, [](Scene& scene) { scene.state.setIsLoadingAnalytics(true); }, analytics);
    picture(
        u"analytics-error"_s,
        [](Scene& scene) {
            scene.state.setAnalyticsError(u"No Cloudflare token.\nAdd one in Preferences."_s);
        },
        analytics);
    picture(u"analytics-nothing"_s, [](Scene&) {}, analytics);
    const auto withCards = [](Scene& scene) {
        QList<DayStats> days;
        for (int day = 0; day < 7; ++day) {
            const qint64 views = day == 3 ? 1000 : (day == 5 ? 500 : day * 30);
            days.append({u"2025-03-%1"_s.arg(day + 9, 2, 10, QChar(u'0')), views, views / 3, views * 9, day,
                         views * 81234});
        }
        scene.state.setAnalyticsCards(
            {{.zone = {u"1"_s, u"storefront.example.com"_s},
              .projectName = u"acme-storefront"_s,
              .days = days},
             {.zone = {u"2"_s, u"a-very-long-domain-name-that-goes-on.example.com"_s},
              .projectName = u"a-project-with-a-name-that-is-much-too-long"_s,
              .days = days},
             {.zone = {u"3"_s, u"docs.example"_s}, .projectName = u"docs"_s, .days = {days.first()}}});
    };
    picture(u"analytics-cards"_s, withCards, analytics);
    picture(u"analytics-expanded"_s, withCards, [&](Person& scene) {
        analytics(scene);
        scene.click(u"acme-storefront"_s);
    });
    return 0;
}
