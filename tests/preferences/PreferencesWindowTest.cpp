#include <QClipboard>
#include <QSignalSpy>
#include <algorithm>

#include "preferences/TextFieldMenu.h"
#include "tests/TestProgram.h"
#include "tests/preferences/PreferencesScene.h"

using namespace tidemark;

namespace {

const QString personalToken = u"Token of Personal"_s;
const QString workToken = u"Token of Work"_s;

}  // namespace

class PreferencesWindowTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_scene = std::make_unique<PreferencesScene>();
        m_scene->stored = AppConfiguration{
            .accounts = {PreferencesScene::account(u"Personal"_s), PreferencesScene::account(u"Work"_s)},
            .cloudflareToken = u"cfut"_s,
            .pollingIntervalSeconds = 50,
            .launchAtLogin = true,
            .soundEnabled = false};
    }
    void cleanup() { m_scene.reset(); }

    void theWindowIsOneOfItsKind() {
        m_scene->open();
        const DesktopWindow& window = m_scene->controller.window();
        QCOMPARE(window.title(), u"Tidemark Preferences"_s);
        QCOMPARE(window.size(), QSize(480, 580));
        QCOMPARE(window.minimumSize(), window.maximumSize());
        QVERIFY(window.flags().testFlags(Qt::WindowCloseButtonHint | Qt::WindowMinimizeButtonHint));
        QVERIFY(!window.flags().testFlag(Qt::WindowMaximizeButtonHint));
    }

    void theFirstStartShowsOneEmptyAccount() {
        m_scene->stored.reset();
        m_scene->open();
        QCOMPARE(field(u"Account name"_s), u"Default"_s);
        QCOMPARE(m_scene->focused(), u"Token of Default"_s);
        QVERIFY(m_scene->see(u"30 seconds"_s));
        QVERIFY(!m_scene->see(u"Save"_s)->isEnabled());
        // Blanks are no token.
        m_scene->type(u" \u00a0"_s);
        QVERIFY(!m_scene->see(u"Save"_s)->isEnabled());
        m_scene->press(Qt::Key_Return);
        QVERIFY(m_scene->controller.isShown());
        m_scene->type(u"vcp_new"_s);
        m_scene->press(Qt::Key_Return);
        QVERIFY(!m_scene->controller.isShown());
        QCOMPARE(m_scene->saved.size(), 1);
        const AppConfiguration& saved = m_scene->saved.first();
        QCOMPARE(saved.accounts.size(), 1);
        QCOMPARE(saved.accounts.first().apiToken, u"vcp_new"_s);
        QCOMPARE(saved, (AppConfiguration{.accounts = saved.accounts}));
    }

    void whatIsNotTouchedIsSavedAsItWas() {
        // Not a value that the stepper gives.
        m_scene->stored->pollingIntervalSeconds = 100000;
        m_scene->open();
        m_scene->click(u"Save"_s);
        QCOMPARE(m_scene->saved, QList{*m_scene->stored});
    }

    void editsAreSavedAndNothingElseIs() {
        m_scene->open();
        m_scene->click(field(u"Account name"_s, 1));
        m_scene->type(u" and play "_s);
        m_scene->click(tokenField(personalToken));
        m_scene->press(Qt::Key_A, Qt::ControlModifier);
        m_scene->press(Qt::Key_Delete);
        reach(m_scene->see(u"Launch at login"_s));
        reach(m_scene->see(u"Play sounds"_s));
        reach(tokenField(u"Cloudflare API Token"_s));
        m_scene->type(u" 2 "_s);
        m_scene->click(u"Save"_s);
        AppConfiguration expected = *m_scene->stored;
        // Without a token an account goes, whatever else it holds.
        expected.accounts.removeFirst();
        expected.accounts.first().name = u"Work and play"_s;
        expected.cloudflareToken = u"cfut 2"_s;
        expected.launchAtLogin = false;
        expected.soundEnabled = true;
        QCOMPARE(m_scene->saved, QList{expected});
    }

    void accountsAreAddedAndRemoved() {
        m_scene->open();
        reach(m_scene->see(u"Add Account"_s));
        QCOMPARE(cardCount(), 3);
        QCOMPARE(m_scene->focused(), u"Account name"_s);
        m_scene->type(u"Third"_s);
        // The middle one.
        m_scene->click(removeButton(1));
        QCOMPARE(cardCount(), 2);
        QCOMPARE(field(u"Account name"_s, 1)->property("text").toString(), u"Third"_s);
        m_scene->click(removeButton(1));
        m_scene->click(removeButton(0));
        QCOMPARE(cardCount(), 0);
        QVERIFY(!m_scene->see(u"Save"_s)->isEnabled());
        m_scene->press(Qt::Key_Return);
        QVERIFY(m_scene->saved.isEmpty());
    }

    void tokensShowOneByOneAndNeverAgainByThemselves() {
        m_scene->open();
        m_scene->click(u"Show "_s + workToken);
        QVERIFY(isMasked(personalToken));
        QVERIFY(!isMasked(workToken));
        QVERIFY(isMasked(u"Cloudflare API Token"_s));
        QVERIFY(m_scene->see(u"Hide "_s + workToken));
        reach(m_scene->see(u"Show Cloudflare API Token"_s));
        QVERIFY(!isMasked(u"Cloudflare API Token"_s));
        m_scene->open();
        QVERIFY(isMasked(workToken));
        QVERIFY(isMasked(u"Cloudflare API Token"_s));
    }

    void maskedTokensStayWhereTheyAre() {
        m_scene->open();
        QGuiApplication::clipboard()->setText(u"before"_s);
        QQuickItem* token = tokenField(personalToken);
        for (const Qt::Key key : {Qt::Key_C, Qt::Key_X}) {
            m_scene->click(token);
            m_scene->press(Qt::Key_A, Qt::ControlModifier);
            m_scene->press(key, Qt::ControlModifier);
            QCOMPARE(QGuiApplication::clipboard()->text(), u"before"_s);
        }
        QCOMPARE(token->property("text").toString(), u"vcp_secret"_s);
        QAccessibleInterface* reader = QAccessible::queryAccessibleInterface(token);
        QCOMPARE(reader->textInterface()->text(0, 100), QString(10, QChar(0x2022)));
        QVERIFY(reader->text(QAccessible::Value).isEmpty());
        const auto hints = token->property("inputMethodHints").value<Qt::InputMethodHints>();
        QVERIFY(hints.testFlags(Qt::ImhSensitiveData | Qt::ImhNoPredictiveText));
    }

    void fieldsHaveTheUsualMenu() {
        m_scene->open();
        QGuiApplication::clipboard()->setText(u"pasted"_s);
        QQuickItem* token = tokenField(personalToken);
        m_scene->click(token);
        m_scene->press(Qt::Key_A, Qt::ControlModifier);
        const auto enabled = [](QQuickItem* field) {
            QStringList titles;
            for (const MenuItem& item : textFieldMenu(field))
                if (item.isEnabled())
                    titles << item.title;
            return titles.join(u' ');
        };
        QCOMPARE(enabled(token), u"Paste Select All"_s);
        m_scene->click(u"Show "_s + personalToken);
        m_scene->click(token);
        m_scene->press(Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(enabled(token), u"Cut Copy Paste Select All"_s);
        for (const MenuItem& item : textFieldMenu(token))
            if (item.title == u"Paste"_s)
                item.action();
        QCOMPARE(token->property("text").toString(), u"pasted"_s);
        QTest::mousePress(&m_scene->screen(), Qt::RightButton, {},
                          token->mapToScene(token->boundingRect().center()).toPoint());
        const auto menus = [] {
            return std::ranges::count_if(QGuiApplication::topLevelWindows(), [](const QWindow* window) {
                return qobject_cast<const MenuWindow*>(window) && window->isVisible();
            });
        };
        QCOMPARE(menus(), 1);
    }

    void pastedLinesBecomeOne() {
        m_scene->open();
        QGuiApplication::clipboard()->setText(u"vcp_pasted\r\n"_s);
        m_scene->click(tokenField(personalToken));
        m_scene->press(Qt::Key_A, Qt::ControlModifier);
        m_scene->press(Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(tokenField(personalToken)->property("text").toString(), u"vcp_pasted"_s);
        // The same again changes nothing of what is held, but must not leave what was pasted either.
        m_scene->press(Qt::Key_A, Qt::ControlModifier);
        m_scene->press(Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(tokenField(personalToken)->property("text").toString(), u"vcp_pasted"_s);
    }

    void theStepperStopsAtItsEnds_data() {
        QTest::addColumn<qint64>("stored");
        QTest::addColumn<int>("steps");
        QTest::addColumn<qint64>("saved");
        QTest::newRow("up") << qint64{50} << 2 << qint64{70};
        QTest::newRow("down") << qint64{50} << -2 << qint64{30};
        QTest::newRow("to the top") << qint64{290} << 3 << qint64{300};
        QTest::newRow("to the bottom") << qint64{20} << -3 << qint64{10};
        QTest::newRow("from beyond the top") << qint64{100000} << -1 << qint64{300};
        QTest::newRow("not beyond the top") << qint64{100000} << 1 << qint64{100000};
        QTest::newRow("from below the bottom") << qint64{-7} << 1 << qint64{10};
        QTest::newRow("between two steps") << qint64{25} << 1 << qint64{35};
    }

    void theStepperStopsAtItsEnds() {
        QFETCH(const qint64, stored);
        QFETCH(const int, steps);
        QFETCH(const qint64, saved);
        m_scene->stored->pollingIntervalSeconds = stored;
        m_scene->open();
        m_scene->see(u"Polling Interval"_s, QAccessible::SpinBox)->forceActiveFocus();
        for (int i = 0; i < std::abs(steps); ++i)
            m_scene->press(steps > 0 ? Qt::Key_Up : Qt::Key_Down);
        m_scene->press(Qt::Key_Return);
        QCOMPARE(m_scene->saved.first().pollingIntervalSeconds, saved);
    }

    void leavingLosesTheEdits_data() {
        QTest::addColumn<int>("way");
        QTest::newRow("Escape") << 0;
        QTest::newRow("Cancel") << 1;
        QTest::newRow("the window's button") << 2;
        QTest::newRow("Return on Cancel") << 3;
        QTest::newRow("opening it again") << 4;
    }

    void leavingLosesTheEdits() {
        QFETCH(const int, way);
        m_scene->open();
        QSignalSpy closed(&m_scene->controller, &PreferencesWindowController::closed);
        m_scene->click(tokenField(personalToken));
        m_scene->type(u"x"_s);
        reach(m_scene->see(u"Launch at login"_s));
        switch (way) {
            case 0:
                m_scene->press(Qt::Key_Escape);
                break;
            case 1:
                m_scene->click(u"Cancel"_s);
                break;
            case 2:
                m_scene->controller.window().close();
                break;
            case 3:
                m_scene->see(u"Cancel"_s)->forceActiveFocus(Qt::TabFocusReason);
                m_scene->press(Qt::Key_Return);
                break;
            default:
                m_scene->open();
                break;
        }
        if (way < 4) {
            QTRY_COMPARE(closed.count(), 1);
            // Nothing of it stays in memory.
            QVERIFY(!m_scene->screen().rootObject());
            m_scene->open();
        }
        QVERIFY(m_scene->saved.isEmpty());
        QCOMPARE(tokenField(personalToken)->property("text").toString(), u"vcp_secret"_s);
        QVERIFY(m_scene->stateOf(u"Launch at login"_s).checked);
    }

    void theKeyboardReachesEverything() {
        m_scene->stored->accounts.removeLast();
        m_scene->open();
        const QStringList order{u"Account name"_s,
                                u"Remove this account"_s,
                                personalToken,
                                u"Show "_s + personalToken,
                                u"Team ID of Personal"_s,
                                u"Create a token in Vercel's account settings"_s,
                                u"Add Account"_s,
                                u"Cloudflare API Token"_s,
                                u"Show Cloudflare API Token"_s,
                                u"Create a token on Cloudflare's API tokens page"_s,
                                u"Polling Interval"_s,
                                u"Launch at login"_s,
                                u"Play sounds on deployment events"_s,
                                u"Cancel"_s,
                                u"Save"_s};
        for (const QString& control : order) {
            QQuickItem* item = m_scene->screen().activeFocusItem();
            QCOMPARE(nameOf(item), control);
            QTRY_VERIFY2(isInSight(item), qPrintable(control));
            m_scene->press(Qt::Key_Tab);
        }
        QCOMPARE(m_scene->focused(), order.first());
        m_scene->press(Qt::Key_P, Qt::AltModifier);
        m_scene->press(Qt::Key_S, Qt::AltModifier);
        QVERIFY(m_scene->saved.first().soundEnabled);
    }

    void linksLeadToTheTokenPages() {
        m_scene->open();
        m_scene->click(u"Create a token in Vercel"_s);
        reach(m_scene->see(u"Create a token on Cloudflare"_s));
        QCOMPARE(m_scene->pages, (QStringList{u"vercel"_s, u"cloudflare"_s}));
    }

    void aKeyringThatWaitsForItsUserIsSaidToDoSo() {
        using Pending = QPromise<std::optional<AppConfiguration>>;
        m_scene->pending = std::make_shared<Pending>();
        m_scene->pending->start();
        m_scene->controller.showWindow();
        QTRY_VERIFY(m_scene->controller.isShown());
        QVERIFY(m_scene->see(u"Waiting for the keyring"_s));
        m_scene->pending->addResult(m_scene->stored);
        m_scene->pending->finish();
        QTRY_VERIFY(tokenField(personalToken));
        // Closed meanwhile, it stays closed.
        m_scene->pending = std::make_shared<Pending>();
        m_scene->pending->start();
        m_scene->controller.showWindow();
        QTRY_VERIFY(m_scene->see(u"Waiting for the keyring"_s));
        m_scene->press(Qt::Key_Escape);
        m_scene->controller.window().close();
        m_scene->settle();
        m_scene->pending->addResult(m_scene->stored);
        m_scene->pending->finish();
        m_scene->settle();
        QVERIFY(!m_scene->controller.isShown());
    }

    void whatIsStoredMeanwhileShowsUnlessItWasEdited() {
        const AppConfiguration later{.accounts = {PreferencesScene::account(u"Later"_s)}};
        m_scene->open();
        m_scene->controller.offerStored(later);
        m_scene->rest();
        QVERIFY(m_scene->see(u"Token of Later"_s));
        m_scene->click(tokenField(u"Token of Later"_s));
        m_scene->type(u"x"_s);
        m_scene->controller.offerStored(*m_scene->stored);
        m_scene->rest();
        QVERIFY(m_scene->see(u"Token of Later"_s));
    }

    void aBuildWithoutUpdatesSaysSo() {
        m_scene->open();
        QVERIFY(m_scene->see(u"Automatic updates aren't configured in this build."_s));
        QVERIFY(!m_scene->see(u"Check Now"_s));
        QVERIFY(!m_scene->see(u"Check for updates automatically"_s));
    }

    void updatesAreCheckedFromTheWindow() {
        m_scene = std::make_unique<PreferencesScene>(Build::appImage);
        const QString feed = u"/appcast.xml"_s;
        m_scene->http.answer(HttpMethod::get, feed,
                             httpAnswer(200, "<rss version=\"2.0\"><channel></channel></rss>"));
        m_scene->http.hold(HttpMethod::get, feed);
        m_scene->open();
        QVERIFY(m_scene->see(u"Not checked yet."_s));
        QVERIFY(m_scene->stateOf(u"Check for updates automatically"_s).checked);
        reach(m_scene->see(u"Check for updates automatically"_s));
        QVERIFY(!m_scene->updates.controller()->automaticallyChecksForUpdates());
        reach(m_scene->see(u"Check Now"_s));
        QVERIFY(!m_scene->see(u"Check Now"_s)->isEnabled());
        m_scene->http.release(HttpMethod::get, feed);
        QTRY_VERIFY(m_scene->see(u"Check Now"_s)->isEnabled());
        // A second after the click, and not before.
        m_scene->clock.advance(std::chrono::milliseconds(999));
        QVERIFY(m_scene->see(u"Not checked yet."_s));
        m_scene->clock.advance(std::chrono::milliseconds(1));
        m_scene->rest();
        QVERIFY(m_scene->see(u"Last checked "_s));
    }

private:
    /// Scrolls there, and clicks.
    void reach(QQuickItem* item) const {
        QVERIFY(item);
        item->forceActiveFocus();
        QTRY_VERIFY(isInSight(item));
        m_scene->click(item);
    }
    /// Whether nothing of it is scrolled away.
    [[nodiscard]] static bool isInSight(QQuickItem* item) {
        const QQuickItem* area = item->parentItem();
        while (area && !area->inherits("QQuickFlickable"))
            area = area->parentItem();
        return !area || area->boundingRect().contains(item->mapRectToItem(area, item->boundingRect()));
    }
    /// The field of that name, counted from 0.
    [[nodiscard]] QQuickItem* fieldItem(const QString& name, int number) const {
        for (QQuickItem* item : visibleItems(m_scene->screen().rootObject()))
            if (nameOf(item) == name && number-- == 0)
                return item;
        return nullptr;
    }
    [[nodiscard]] QQuickItem* field(const QString& name, int number) const { return fieldItem(name, number); }
    [[nodiscard]] QString field(const QString& name) const {
        return fieldItem(name, 0)->property("text").toString();
    }
    [[nodiscard]] QQuickItem* removeButton(int number) const {
        return fieldItem(u"Remove this account"_s, number);
    }
    [[nodiscard]] int cardCount() const {
        int count = 0;
        while (removeButton(count))
            ++count;
        return count;
    }
    [[nodiscard]] QQuickItem* tokenField(const QString& name) const {
        return m_scene->see(name, QAccessible::EditableText);
    }
    [[nodiscard]] bool isMasked(const QString& name) const { return isMasked(tokenField(name)); }
    [[nodiscard]] static bool isMasked(QQuickItem* item) {
        return QAccessible::queryAccessibleInterface(item)->state().passwordEdit;
    }

    std::unique_ptr<PreferencesScene> m_scene;
};

TIDEMARK_TEST_MAIN(PreferencesWindowTest, runViewTest<PreferencesWindowTest>)
#include "PreferencesWindowTest.moc"
