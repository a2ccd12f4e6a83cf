#include <QClipboard>
#include <algorithm>

#include "controls/TextFieldSupport.h"
#include "tests/TestProgram.h"
#include "tests/preferences/PreferencesScene.h"

using namespace tidemark;

/// What can be done with the preferences' fields, buttons and links.
class PreferencesControlsTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_scene = std::make_unique<PreferencesScene>(); }
    void cleanup() { m_scene.reset(); }

    void maskedTokensStayWhereTheyAre() {
        m_scene->open();
        QGuiApplication::clipboard()->setText(u"before"_s);
        QQuickItem* token = m_scene->tokenField(PreferencesScene::personalToken);
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
        QQuickItem* token = m_scene->tokenField(PreferencesScene::personalToken);
        m_scene->click(token);
        m_scene->press(Qt::Key_A, Qt::ControlModifier);
        const auto enabled = [](QQuickItem* field) {
            QStringList titles;
            for (const MenuItem& item : TextFieldSupport::of(field)->menu())
                if (item.isEnabled())
                    titles << item.title;
            return titles.join(u' ');
        };
        QCOMPARE(enabled(token), u"Paste Select All"_s);
        m_scene->click(u"Show "_s + PreferencesScene::personalToken);
        m_scene->click(token);
        m_scene->press(Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(enabled(token), u"Cut Copy Paste Select All"_s);
        for (const MenuItem& item : TextFieldSupport::of(token)->menu())
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
        m_scene->click(m_scene->tokenField(PreferencesScene::personalToken));
        m_scene->press(Qt::Key_A, Qt::ControlModifier);
        m_scene->press(Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(m_scene->tokenField(PreferencesScene::personalToken)->property("text").toString(),
                 u"vcp_pasted"_s);
        // The same again changes nothing of what is held, but must not leave what was pasted either.
        m_scene->press(Qt::Key_A, Qt::ControlModifier);
        m_scene->press(Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(m_scene->tokenField(PreferencesScene::personalToken)->property("text").toString(),
                 u"vcp_pasted"_s);
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

    void theKeyboardReachesEverything() {
        m_scene->stored->accounts.removeLast();
        m_scene->open();
        const QStringList order{u"Account name"_s,
                                u"Remove this account"_s,
                                PreferencesScene::personalToken,
                                u"Show "_s + PreferencesScene::personalToken,
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
            QTRY_VERIFY2(PreferencesScene::isInSight(item), qPrintable(control));
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
        m_scene->reach(m_scene->see(u"Create a token on Cloudflare"_s));
        QCOMPARE(m_scene->pages, (QStringList{u"vercel"_s, u"cloudflare"_s}));
    }

    void toolsTellControlsApartAndPressThem() {
        m_scene->open();
        const auto press = [this](const QString& name, QAccessible::Role role) {
            QQuickItem* item = m_scene->see(name, role);
            QVERIFY2(item, qPrintable(name));
            QAccessible::queryAccessibleInterface(item)->actionInterface()->doAction(
                QAccessibleActionInterface::pressAction());
            m_scene->rest();
        };
        press(u"Create a token on Cloudflare's API tokens page"_s, QAccessible::Link);
        QCOMPARE(m_scene->pages, QStringList{u"cloudflare"_s});
        press(u"Show "_s + PreferencesScene::personalToken, QAccessible::Button);
        QVERIFY(m_scene->see(u"Hide "_s + PreferencesScene::personalToken));
        const QString sounds = u"Play sounds on deployment events"_s;
        QVERIFY(!m_scene->stateOf(sounds).checked);
        press(sounds, QAccessible::CheckBox);
        QVERIFY(m_scene->stateOf(sounds).checked);
        press(u"Save"_s, QAccessible::Button);
        QCOMPARE(m_scene->saved.size(), 1);
        QVERIFY(m_scene->saved.first().soundEnabled);
    }

private:
    std::unique_ptr<PreferencesScene> m_scene;
};

TIDEMARK_TEST_MAIN(PreferencesControlsTest, runViewTest<PreferencesControlsTest>)
#include "PreferencesControlsTest.moc"
