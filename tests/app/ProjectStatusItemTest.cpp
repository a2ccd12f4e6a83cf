#include <QImage>

#include "app/items/ProjectStatusItem.h"
#include "app/items/StatusCircle.h"
#include "platform/base/Characters.h"
#include "platform/tray/StatusIcon.h"
#include "presentation/StatePresentation.h"
#include "tests/TestProgram.h"
#include "tests/fakes/FakeNotificationCenter.h"
#include "tests/fakes/FakeSoundPlayer.h"
#include "tests/fakes/FakeStatusBar.h"
#include "tests/fakes/FakeWorkspace.h"
#include "tests/fakes/ManualClock.h"

using namespace tidemark;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// A menu as one reads it: a line an entry, "--" for a separator, "*" before what can be chosen.
QStringList readMenu(const Menu& menu) {
    QStringList lines;
    for (const auto& item : menu)
        if (item.isSeparator)
            lines << u"--"_s;
        else
            lines << (item.isEnabled() ? u"* "_s : QString()) + item.titleNow();
    return lines;
}

QImage drawn(const QColor& color, const QString& letters, int scale) {
    const StatusImage image = StatusCircle::makeImage(color, letters);
    QImage canvas(image.size.toSize() * scale, QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::transparent);
    QPainter painter(&canvas);
    painter.scale(scale, scale);
    image.draw(painter);
    return canvas;
}

/// The place of everything that is nearly white.
QRect inkOf(const QImage& image) {
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            if (qGreen(image.pixel(x, y)) > 128)
                ink |= QRect(x, y, 1, 1);
    }
    return ink;
}

}  // namespace

class ProjectStatusItemTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_deployment = {.id = u"d"_s,
                        .name = u"api_v2"_s,
                        .url = u"api-1.vercel.app"_s,
                        .created = m_clock.now().time_since_epoch() / 1ms - 300'000,
                        .state = u"READY"_s,
                        .inspectorUrl = u"https://vercel.com/me/api/d"_s,
                        .meta = DeploymentMeta{.githubCommitMessage = u"Fix the build\n\nIt was broken."_s,
                                               .githubCommitRef = u"main"_s}};
        m_item = std::make_unique<ProjectStatusItem>(
            VercelProject{.id = u"p"_s, .name = u"api_v2"_s},
            ProjectStatusItem::Services{m_bar, m_notifications, m_workspace, m_clock},
            ProjectStatusItem::Actions{.onRefresh = [this] { m_chosen << u"refresh"_s; },
                                       .onPreferences = [this] { m_chosen << u"preferences"_s; },
                                       .onCheckForUpdates = {},
                                       .onQuit = [this] { m_chosen << u"quit"_s; }});
    }

    void cleanup() {
        m_item.reset();
        QVERIFY(m_bar.items.isEmpty());
        m_chosen.clear();
        m_workspace.urls.clear();
    }

    void theMenuTellsEveryPhase() {
        const QStringList title{u"api_v2"_s, u"--"_s};
        const QStringList failed{u"⚠️ Last check failed"_s, u"offline"_s};
        const QStringList details{u"Status: ✅ Ready"_s,        u"Branch: main"_s, u"Commit: Fix the build"_s,
                                  u"Deployed: 5 minutes ago"_s, u"--"_s,           u"* Open in Vercel"_s,
                                  u"* Open Deployment"_s};
        const QStringList actions{u"--"_s, u"* Refresh Now"_s, u"--"_s, u"* Preferences…"_s,
                                  u"* Quit Tidemark"_s};
        const QStringList loading{u"Loading…"_s};
        const QStringList separator{u"--"_s};
        const QStringList lastKnown{u"Showing last known status:"_s, u"--"_s};
        QCOMPARE(readMenu(shown().menu), title + loading + actions);
        QCOMPARE(shown().toolTip, u"api_v2: loading…"_s);
        QVERIFY(hasPill(color(DeploymentState::unknown)));

        m_item->setError(u"offline"_s);
        QCOMPARE(readMenu(shown().menu), title + failed + separator + actions);
        QCOMPARE(shown().toolTip, u"api_v2: last check failed — offline"_s);
        QVERIFY(hasPill(color(DeploymentState::unknown)));

        m_item->update(m_deployment);
        QCOMPARE(readMenu(shown().menu), title + details + actions);
        QCOMPARE(shown().toolTip, u"api_v2: READY"_s);
        QVERIFY(hasPill(color(DeploymentState::ready)));

        m_item->setError(u"offline"_s);
        QCOMPARE(readMenu(shown().menu), title + failed + lastKnown + details + actions);
        QColor pale = color(DeploymentState::ready);
        pale.setAlphaF(0.4F);
        QVERIFY(hasPill(pale));

        const int images = shown().imageCount;
        m_item->setError(u"offline"_s);
        QCOMPARE(shown().imageCount, images);
        m_item->update(m_deployment);
        QCOMPARE(readMenu(shown().menu), title + details + actions);
    }

    void theAgeIsThatOfTheMomentOfReading() {
        m_item->update(m_deployment);
        const Menu menu = shown().menu;
        m_clock.advance(120s);
        QVERIFY(readMenu(menu).contains(u"Deployed: 7 minutes ago"_s));
    }

    void aStateThatIsNewReadsAsUnknown() {
        m_deployment.state = u"SHINY"_s;
        m_item->update(m_deployment);
        QCOMPARE(shown().toolTip, u"api_v2: unknown"_s);
        QCOMPARE(readMenu(shown().menu).value(2), u"Status: ⚪ Unknown"_s);
    }

    void commitsAreCutAtAWholeCharacter() {
        const QString family = u"👨‍👩‍👧"_s;
        const QString fifty = family.repeated(50);
        for (const auto& [message, line] :
             {std::pair(fifty + u"\nmore"_s, fifty), {fifty + family, fifty + u'…'}, {u""_s, u""_s}}) {
            m_deployment.meta->githubCommitMessage = message;
            m_item->update(m_deployment);
            QCOMPARE(readMenu(shown().menu).value(4), u"Commit: "_s + line);
        }
        m_deployment.meta.reset();
        m_item->update(m_deployment);
        QCOMPARE(readMenu(shown().menu).mid(3, 2), (QStringList{u"Branch: —"_s, u"Commit: —"_s}));
    }

    void onlyWebPagesAreOffered() {
        const QString page = u"https://vercel.com/x"_s;
        const QList<std::tuple<QString, QString, QStringList>> rows{
            {page, u"a.vercel.app"_s, {page, u"https://a.vercel.app"_s}},
            {QString(), u"a.vercel.app"_s, {u"https://a.vercel.app"_s}},
            {u"file:///etc/passwd"_s, u"a b"_s, {}}};
        for (const auto& [inspectorUrl, url, opened] : rows) {
            m_deployment.inspectorUrl = inspectorUrl;
            m_deployment.url = url;
            m_item->update(m_deployment);
            m_chosen.clear();
            m_workspace.urls.clear();
            for (const auto& item : shown().menu)
                if (item.action)
                    item.action();
            QCOMPARE(m_chosen, (QStringList{u"refresh"_s, u"preferences"_s, u"quit"_s}));
            QCOMPARE(QUrl::toStringList(m_workspace.urls), opened);
        }
    }

    void thePillHoldsItsLetters() {
        constexpr int scale = 4;
        const QColor red(200, 0, 0);
        for (const QString& letters : {u"ap"_s, u"a"_s, u"ww"_s, u"﷽﷽"_s}) {
            const QImage image = drawn(red, letters, scale);
            const auto at = [&image](double x, double y) {
                return image.pixelColor(static_cast<int>(x * scale), static_cast<int>(y * scale));
            };
            // A point of margin all around, and half circles at both ends.
            for (const QPointF outside :
                 {QPointF(0.5, 9), {27.5, 9}, {14, 0.5}, {14, 17.5}, {2, 2}, {26, 16}})
                QCOMPARE(at(outside.x(), outside.y()).alpha(), 0);
            for (const QPointF inside : {QPointF(1.5, 9), {26.2, 9}, {9, 1.5}, {19, 16.2}})
                QCOMPARE(at(inside.x(), inside.y()), red);
            const QRect ink = inkOf(image);
            QVERIFY(!ink.isEmpty());
            QVERIFY(QRect(2 * scale, 2 * scale, 24 * scale, 14 * scale).contains(ink));
            QVERIFY((ink.center() - image.rect().center()).manhattanLength() < 2 * scale);
        }
    }

    void lettersAreTheFirstTwoInUpperCase() {
        const QColor red(200, 0, 0);
        QCOMPARE(drawn(red, u"api"_s, 2), drawn(red, u"AP"_s, 2));
        QVERIFY(drawn(red, u"api"_s, 2) != drawn(red, u"AB"_s, 2));
        // One letter is larger than each of two.
        QVERIFY(inkOf(drawn(red, u"i"_s, 8)).height() > inkOf(drawn(red, u"ii"_s, 8)).height());
        QVERIFY(inkOf(drawn(red, QString(), 2)).isEmpty());
        // A letter with endless accents would take seconds to draw.
        QVERIFY(firstCharacters(u"Z"_s + QString(200'000, QChar(0x0301)), 2).size() < 100);
    }

    void withoutAPanelNothingIsLost() {
        m_item.reset();
        m_bar.isAvailable = false;
        init();
        m_item->update(m_deployment);
        m_item->setError(u"offline"_s);
        QVERIFY(m_bar.items.isEmpty());
        m_bar.isAvailable = true;
    }

private:
    [[nodiscard]] FakeStatusBar::Shown shown() const { return m_bar.items.value(u"tidemark-p"_s); }

    [[nodiscard]] bool hasPill(const QColor& color) const {
        const QImage expected = drawStatusIcon(StatusCircle::makeImage(color, u"AP"_s), {}, 22);
        return drawStatusIcon(shown().image, {}, 22) == expected;
    }

    FakeStatusBar m_bar;
    FakeNotificationCenter m_center;
    FakeSoundPlayer m_sounds;
    FakeWorkspace m_workspace;
    ManualClock m_clock;
    NotificationManager m_notifications{m_center, m_sounds, m_workspace, m_clock,
                                        Bundle{.identifier = u"com.tidemark.Test"_s}};
    Deployment m_deployment;
    QStringList m_chosen;
    std::unique_ptr<ProjectStatusItem> m_item;
};

TIDEMARK_GUI_TEST(ProjectStatusItemTest)
#include "ProjectStatusItemTest.moc"
