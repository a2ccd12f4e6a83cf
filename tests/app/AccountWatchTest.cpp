#include "tests/TestProgram.h"
#include "tests/app/Rig.h"

using namespace tidemark;

class AccountWatchTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_rig = std::make_unique<Rig>();
        m_rig->listProjects(u"A"_s, {u"api"_s, u"web"_s});
    }
    void cleanup() { m_rig.reset(); }

    void aRefusedTokenIsToldOnce() {
        m_rig->store({.accounts = {Rig::account(u"A"_s)}});
        m_rig->answerList(u"A"_s, httpAnswer(401));
        m_rig->launch();
        QCOMPARE(told(), QStringList{u"The token of A was refused"_s});
        QVERIFY(m_rig->notificationCenter.requests.constFirst().body.contains(u"Invalid API token (401)"_s));
        QCOMPARE(m_rig->state().accountErrors().value(u"A"_s), u"Invalid API token (401)"_s);
        QVERIFY(!Rig::preferencesWindow());
        m_rig->notificationCenter.click(0);
        m_rig->settle();
        QVERIFY(Rig::preferencesWindow());
        // The same token again, and hours later.
        m_rig->save({.accounts = {Rig::account(u"A"_s)}, .pollingIntervalSeconds = 60});
        m_rig->clock.advance(3h);
        m_rig->settle();
        QCOMPARE(told().size(), 1);
        // Another one that is as bad, and one that is accepted.
        m_rig->save({.accounts = {Rig::account(u"A"_s, u"typo"_s)}});
        QCOMPARE(told().size(), 2);
        m_rig->listProjects(u"A"_s, {u"api"_s});
        m_rig->save({.accounts = {Rig::account(u"A"_s, u"good"_s)}});
        QVERIFY(m_rig->state().accountErrors().isEmpty());
        QCOMPARE(told().size(), 2);
    }

    void aTokenMayBeRevokedLater() {
        m_rig->store({.accounts = {Rig::account(u"A"_s)}});
        m_rig->launch();
        m_rig->clock.advance(5s);
        // One project may be another team's.
        m_rig->answerDeployments(u"api"_s, httpAnswer(403));
        m_rig->clock.advance(60s);
        QVERIFY(told().isEmpty());
        m_rig->answerDeployments(u"web"_s, httpAnswer(500));
        m_rig->clock.advance(60s);
        QVERIFY(told().isEmpty());
        m_rig->answerDeployments(u"web"_s, httpAnswer(403));
        m_rig->clock.advance(600s);
        QCOMPARE(told().size(), 1);
        QCOMPARE(m_rig->state().accountErrors().value(u"A"_s), u"HTTP error 403"_s);
        m_rig->answerDeployments(u"web"_s, QStringList{u"READY"_s});
        m_rig->clock.advance(60s);
        QVERIFY(m_rig->state().accountErrors().isEmpty());
        m_rig->answerDeployments(u"web"_s, httpAnswer(403));
        m_rig->clock.advance(60s);
        QCOMPARE(told().size(), 2);
    }

    void aRemovedAccountIsForgotten() {
        m_rig->store({.accounts = {Rig::account(u"A"_s), Rig::account(u"B"_s)}});
        m_rig->answerList(u"B"_s, httpAnswer(403));
        m_rig->launch();
        QCOMPARE(told(), QStringList{u"The token of B was refused"_s});
        m_rig->save({.accounts = {Rig::account(u"A"_s)}});
        QVERIFY(m_rig->state().accountErrors().isEmpty());
    }

private:
    [[nodiscard]] QStringList told() const {
        QStringList titles;
        for (const auto& request : m_rig->notificationCenter.requests)
            titles.append(request.title);
        return titles;
    }

    std::unique_ptr<Rig> m_rig;
};

TIDEMARK_GUI_TEST(AccountWatchTest)
#include "AccountWatchTest.moc"
