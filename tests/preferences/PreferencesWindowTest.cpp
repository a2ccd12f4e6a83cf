#include <QClipboard>
#include <QSignalSpy>
#include <algorithm>

#include "tests/TestProgram.h"
#include "tests/preferences/PreferencesScene.h"

using namespace tidemark;

namespace {

const QString workToken = u"Token of Work"_s;

}  // namespace

class PreferencesWindowTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_scene = std::make_unique<PreferencesScene>(); }
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
        QCOMPARE(saved, (AppConfiguration{.accounts = saved.accounts, .isCloudflareTokenUnread = true}));
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
        m_scene->click(m_scene->tokenField(PreferencesScene::personalToken));
        m_scene->press(Qt::Key_A, Qt::ControlModifier);
        m_scene->press(Qt::Key_Delete);
        m_scene->reach(m_scene->see(u"Launch at login"_s));
        m_scene->reach(m_scene->see(u"Play sounds"_s));
        m_scene->reach(m_scene->tokenField(u"Cloudflare API Token"_s));
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
        m_scene->reach(m_scene->see(u"Add Account"_s));
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
        QVERIFY(isMasked(PreferencesScene::personalToken));
        QVERIFY(!isMasked(workToken));
        QVERIFY(isMasked(u"Cloudflare API Token"_s));
        QVERIFY(m_scene->see(u"Hide "_s + workToken));
        m_scene->reach(m_scene->see(u"Show Cloudflare API Token"_s));
        QVERIFY(!isMasked(u"Cloudflare API Token"_s));
        m_scene->open();
        QVERIFY(isMasked(workToken));
        QVERIFY(isMasked(u"Cloudflare API Token"_s));
    }

    void leavingLosesTheEdits_data() {
        QTest::addColumn<int>("way");
        QTest::newRow("Escape") << 0;
        QTest::newRow("Cancel") << 1;
        QTest::newRow("the window's button") << 2;
        QTest::newRow("Return on Cancel") << 3;
    }

    void leavingLosesTheEdits() {
        QFETCH(const int, way);
        m_scene->open();
        QSignalSpy closed(&m_scene->controller, &PreferencesWindowController::closed);
        m_scene->click(m_scene->tokenField(PreferencesScene::personalToken));
        m_scene->type(u"x"_s);
        m_scene->reach(m_scene->see(u"Launch at login"_s));
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
            default:
                m_scene->see(u"Play sounds on deployment events"_s)->forceActiveFocus(Qt::OtherFocusReason);
                m_scene->press(Qt::Key_Tab);
                m_scene->press(Qt::Key_Return);
                break;
        }
        QTRY_COMPARE(closed.count(), 1);
        // Nothing of it stays in memory.
        QVERIFY(!m_scene->screen().rootObject());
        m_scene->open();
        QVERIFY(m_scene->saved.isEmpty());
        QCOMPARE(m_scene->tokenField(PreferencesScene::personalToken)->property("text").toString(),
                 u"vcp_secret"_s);
        QVERIFY(m_scene->stateOf(u"Launch at login"_s).checked);
    }

    void openingItAgainKeepsTheEdits() {
        const auto token = [this] {
            return m_scene->tokenField(PreferencesScene::personalToken)->property("text").toString();
        };
        m_scene->open();
        m_scene->click(m_scene->tokenField(PreferencesScene::personalToken));
        m_scene->type(u"x"_s);
        const QString edited = token();
        m_scene->open();
        QCOMPARE(token(), edited);
        m_scene->controller.showWindow(m_scene->stored);
        QCOMPARE(token(), edited);
        // Edited while it is loaded again, from a keyring that waits for its user.
        m_scene->press(Qt::Key_Escape);
        m_scene->open();
        m_scene->pending = std::make_shared<QPromise<std::optional<AppConfiguration>>>();
        m_scene->pending->start();
        m_scene->controller.showWindow();
        m_scene->click(m_scene->tokenField(PreferencesScene::personalToken));
        m_scene->type(u"y"_s);
        const QString editedMeanwhile = token();
        m_scene->pending->addResult(m_scene->stored);
        m_scene->pending->finish();
        m_scene->settle();
        QCOMPARE(token(), editedMeanwhile);
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
        QTRY_VERIFY(m_scene->tokenField(PreferencesScene::personalToken));
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
        m_scene->click(m_scene->tokenField(u"Token of Later"_s));
        m_scene->type(u"x"_s);
        m_scene->controller.offerStored(*m_scene->stored);
        m_scene->rest();
        QVERIFY(m_scene->see(u"Token of Later"_s));
    }

    void aRefusedAccountSaysWhy() {
        const QString reason = u"Refused by Vercel: HTTP error 403"_s;
        m_scene->controller.setAccountErrors({{m_scene->stored->accounts[0].id, u"HTTP error 403"_s}});
        m_scene->open();
        QVERIFY(m_scene->see(reason));
        m_scene->controller.setAccountErrors({});
        QVERIFY(!m_scene->see(reason));
        m_scene->controller.setAccountErrors({{m_scene->stored->accounts[0].id, u"HTTP error 403"_s}});
        QVERIFY(m_scene->see(reason));
    }

    void whatCouldNotBeReadStaysUnlessItIsTypedAnew() {
        const QString notice = u"The stored token could not be read."_s;
        AppConfiguration unread = *m_scene->stored;
        for (VercelAccount& account : unread.accounts) {
            account.apiToken.clear();
            account.isTokenUnread = true;
        }
        unread.cloudflareToken.clear();
        unread.isCloudflareTokenUnread = true;
        m_scene->stored = unread;
        m_scene->open();
        QVERIFY(m_scene->see(notice));
        QCOMPARE(m_scene->focused(), u"Token of Personal"_s);
        m_scene->type(u"vcp_new"_s);
        m_scene->click(u"Save"_s);
        unread.accounts[0].apiToken = u"vcp_new"_s;
        unread.accounts[0].isTokenUnread = false;
        QCOMPARE(m_scene->saved, QList{unread});
    }

    void whatIsWrongIsSaidAboveEverything() {
        m_scene->open();
        QVERIFY(!m_scene->see(u"These settings"_s));
        m_scene->controller.close();
        m_scene->notice = u"These settings could not be saved: No space left on device"_s;
        m_scene->open();
        QVERIFY(m_scene->see(m_scene->notice));
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
        m_scene->reach(m_scene->see(u"Check for updates automatically"_s));
        QVERIFY(!m_scene->updates.controller()->automaticallyChecksForUpdates());
        m_scene->reach(m_scene->see(u"Check Now"_s));
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
    [[nodiscard]] bool isMasked(const QString& name) const { return isMasked(m_scene->tokenField(name)); }
    [[nodiscard]] static bool isMasked(QQuickItem* item) {
        return QAccessible::queryAccessibleInterface(item)->state().passwordEdit;
    }

    std::unique_ptr<PreferencesScene> m_scene;
};

TIDEMARK_TEST_MAIN(PreferencesWindowTest, runViewTest<PreferencesWindowTest>)
#include "PreferencesWindowTest.moc"
