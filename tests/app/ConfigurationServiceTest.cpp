#include <QFile>
#include <QQuickItem>
#include <QQuickView>

#include "tests/TestProgram.h"
#include "tests/app/Rig.h"

using namespace tidemark;

class ConfigurationServiceTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_rig = std::make_unique<Rig>(); }
    void cleanup() { m_rig.reset(); }

    void whatCouldNotBeReadTakesOverLater_data() {
        QTest::addColumn<QString>("occasion");
        for (const char* occasion : {"the keyring says so", "the popover opens", "the preferences open"})
            QTest::newRow(occasion) << QString::fromLatin1(occasion);
    }

    void whatCouldNotBeReadTakesOverLater() {
        QFETCH(const QString, occasion);
        const AppConfiguration configuration{.accounts = {Rig::account(u"A"_s)}, .launchAtLogin = true};
        m_rig->store(configuration);
        m_rig->listProjects(u"A"_s, {u"p1"_s});
        m_rig->keychain->setMood(FakeKeychain::Mood::unavailable);
        m_rig->launch();
        QVERIFY(Rig::preferencesWindow());
        // It has come, but stays locked.
        QVERIFY(m_rig->keychain->announce());
        m_rig->settle();
        QVERIFY(!m_rig->state().config());
        using Prompting = Keychain::Prompting;
        QCOMPARE(m_rig->keychain->sessions().sliced(1),
                 (QList{Prompting::allowed, Prompting::unlessDeclined}));

        m_rig->keychain->setMood(FakeKeychain::Mood::willing);
        if (occasion == "the popover opens"_L1)
            m_rig->delegate->showPopover();
        else if (occasion == "the preferences open"_L1)
            m_rig->delegate->openPreferences();
        else
            QVERIFY(m_rig->keychain->announce());
        m_rig->settle();
        QCOMPARE(m_rig->state().config(), configuration);
        QCOMPARE(m_rig->loginItem.registrations, 1);
        QCOMPARE(m_rig->takeTimeline(), (QStringList{u"0 list A"_s, u"0 p1"_s, u"0 domain of p1"_s}));
        QCOMPARE(shownAccounts(), QStringList{u"A"_s});
        QVERIFY(!m_rig->keychain->announce());  // nobody watches any more
    }

    void whatTheUserSavedIsNotReplacedByWhatIsReadLater() {
        m_rig->store({.accounts = {Rig::account(u"A"_s)}, .cloudflareToken = u"cf"_s});
        m_rig->listProjects(u"B"_s, {u"q1"_s});
        m_rig->keychain->setMood(FakeKeychain::Mood::unavailable);
        m_rig->launch();
        // A late load waits for the user, and the save behind it.
        m_rig->keychain->setMood(FakeKeychain::Mood::prompting);
        for (int i = 0; i < 100; ++i)
            QVERIFY(m_rig->keychain->announce());
        AppConfiguration saved{.accounts = {Rig::account(u"B"_s)}, .isCloudflareTokenUnread = true};
        m_rig->delegate->saveConfiguration(saved);
        QCOMPARE(m_rig->state().config()->accounts, saved.accounts);
        m_rig->keychain->setMood(FakeKeychain::Mood::willing);
        m_rig->settle();
        // A field that was empty only because nothing could be read deletes nothing.
        saved.cloudflareToken = u"cf"_s;
        saved.isCloudflareTokenUnread = false;
        QCOMPARE(m_rig->state().config(), saved);
        QCOMPARE(ConfigStore(m_rig->configPath(), *m_rig->keychain).load(), saved);
        QCOMPARE(m_rig->keychain->sessions().size(), 5);  // a hundred announcements are one load
        QVERIFY(QFile::exists(m_rig->configPath() + u".bak"_s));
    }

    void aKeyringThatFailsLaterCostsNothing() {
        const AppConfiguration configuration{.accounts = {Rig::account(u"A"_s)}, .cloudflareToken = u"cf"_s};
        m_rig->store(configuration);
        m_rig->listProjects(u"A"_s, {u"p1"_s});
        m_rig->launch();
        m_rig->keychain->setMood(FakeKeychain::Mood::unavailable);
        m_rig->delegate->openPreferences();
        m_rig->settle();
        QCOMPARE(shownAccounts(), QStringList{u"A"_s});
        // What it shows is what is in use, the tokens included.
        m_rig->keychain->setMood(FakeKeychain::Mood::willing);
        QTest::keyClick(Rig::preferencesWindow(), Qt::Key_Return);
        m_rig->settle();
        QVERIFY(!Rig::preferencesWindow());
        QCOMPARE(ConfigStore(m_rig->configPath(), *m_rig->keychain).load(), configuration);
    }

    void aSaveThatFailsIsToldAndUsedAllTheSame() {
        m_rig->listProjects(u"A"_s, {u"p1"_s});
        m_rig->launch();
        // A folder where the file should be.
        QVERIFY(QDir().mkpath(m_rig->configPath()));
        const AppConfiguration configuration{
            .accounts = {Rig::account(u"A"_s)}, .pollingIntervalSeconds = 10, .launchAtLogin = true};
        m_rig->save(configuration);
        QCOMPARE(m_rig->state().config()->accounts, configuration.accounts);
        QCOMPARE(m_rig->loginItem.registrations, 1);
        QCOMPARE(m_rig->notificationCenter.requests.size(), 1);
        QCOMPARE(m_rig->notificationCenter.requests.first().title, u"Your settings were not saved"_s);
        m_rig->takeTimeline();
        m_rig->clock.advance(10s);
        QCOMPARE(m_rig->takeTimeline(), QStringList{u"10 p1"_s});
        // The window shows what is in use, and says that it was not saved.
        m_rig->notificationCenter.click(0);
        m_rig->settle();
        QCOMPARE(shownAccounts(), QStringList{u"A"_s});
        QVERIFY(notice().contains(u"could not be saved"_s));
        QVERIFY(QDir().rmdir(m_rig->configPath()));
        m_rig->save(configuration);
        m_rig->delegate->openPreferences();
        m_rig->settle();
        QCOMPARE(notice(), QString());
    }

    void accountsAreThereWhenTheirTokensCannotBeRead() {
        const AppConfiguration configuration{.accounts = {Rig::account(u"A"_s), Rig::account(u"B"_s)},
                                             .cloudflareToken = u"cf"_s};
        m_rig->store(configuration);
        m_rig->listProjects(u"A"_s, {u"p1"_s});
        m_rig->listProjects(u"B"_s, {u"q1"_s});
        m_rig->keychain->setMood(FakeKeychain::Mood::unavailable);
        m_rig->launch();
        QCOMPARE(shownAccounts(), (QStringList{u"A"_s, u"B"_s}));
        // Saved like that, it loses nothing, and the rest comes with the keyring.
        AppConfiguration edited = configuration;
        edited.pollingIntervalSeconds = 60;
        edited.accounts[0].apiToken = u"new"_s;
        edited.accounts[1].apiToken.clear();
        edited.accounts[1].isTokenUnread = true;
        edited.cloudflareToken.clear();
        edited.isCloudflareTokenUnread = true;
        m_rig->save(edited);
        QVERIFY(!m_rig->state().project(u"q1"_s));
        m_rig->keychain->setMood(FakeKeychain::Mood::willing);
        QVERIFY(m_rig->keychain->announce());
        m_rig->settle();
        AppConfiguration expected = configuration;
        expected.pollingIntervalSeconds = 60;
        expected.accounts[0].apiToken = u"new"_s;
        QCOMPARE(m_rig->state().config(), expected);
        QVERIFY(m_rig->state().project(u"q1"_s));
        QVERIFY(!m_rig->keychain->announce());
    }

private:
    static PreferencesModel* shownModel() {
        const auto* view = qobject_cast<QQuickView*>(Rig::preferencesWindow());
        return view->rootObject()->property("preferences").value<PreferencesModel*>();
    }
    /// What the preferences window says above everything else.
    static QString notice() { return shownModel()->notice(); }

    /// The names of the accounts in the preferences window.
    static QStringList shownAccounts() {
        QStringList names;
        for (const auto& account : shownModel()->accountDrafts())
            names << account.name;
        return names;
    }

    std::unique_ptr<Rig> m_rig;
};

TIDEMARK_GUI_TEST(ConfigurationServiceTest)
#include "ConfigurationServiceTest.moc"
