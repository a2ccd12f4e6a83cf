#include "platform/session/DBusNotificationCenter.h"
#include "tests/TestProgram.h"
#include "tests/fakes/DesktopSession.h"
#include "tests/platform/session/FakeNotificationService.h"

namespace tidemark {
namespace {

using namespace Qt::StringLiterals;

const QString actionInvoked = u"ActionInvoked"_s;
const QString notificationClosed = u"NotificationClosed"_s;

/// A request whose user info contains the title.
NotificationRequest titled(const QString& title) {
    return {.identifier = u"id-"_s + title,
            .title = title,
            .body = u"a & <b>\"c\"</b>"_s,
            .userInfo = {{u"key"_s, title}},
            .actions = {NotificationAction::click(), {u"more"_s, u"More"_s}}};
}

class NotificationCenterTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_service = std::make_unique<FakeNotificationService>();
        m_service->appear();
        m_center = std::make_unique<DBusNotificationCenter>(u"Tidemark"_s, u"com.example.App"_s,
                                                            QDBusConnection::sessionBus());
        m_center->setResponseHandler([this](const auto& userInfo, const QString& action) {
            m_clicks += userInfo.value(u"key"_s) + (action == u"more"_s ? u"+"_s : QString());
            m_token = qgetenv("XDG_ACTIVATION_TOKEN");
        });
        m_clicks.clear();
        qunsetenv("XDG_ACTIVATION_TOKEN");
    }

    void cleanup() {
        m_center.reset();
        m_service.reset();
        QTRY_VERIFY(!desktopsession::isOnTheBus(u"org.freedesktop.Notifications"_s));
    }

    void sendsWhatTheServiceUnderstands_data() {
        QTest::addColumn<QVariant>("capabilities");
        QTest::addColumn<QString>("body");
        QTest::addColumn<QStringList>("actions");
        const QString plain = u"a & <b>\"c\"</b>"_s;
        const QString escaped = u"a &amp; &lt;b&gt;&quot;c&quot;&lt;/b&gt;"_s;
        const QStringList everything{u"actions"_s, u"body-markup"_s, u"sound"_s};
        QTest::newRow("nothing") << QVariant(QStringList()) << plain << QStringList();
        QTest::newRow("everything") << QVariant(everything) << escaped
                                    << QStringList{u"default"_s, QString(), u"more"_s, u"More"_s};
        QTest::newRow("an error") << QVariant() << plain << QStringList();
    }

    void sendsWhatTheServiceUnderstands() {
        QFETCH(const QVariant, capabilities);
        QFETCH(const QString, body);
        QFETCH(const QStringList, actions);
        m_service->capabilities = capabilities;
        show(titled(u"<i>Shop</i>"_s));
        const QVariantMap hints{{u"desktop-entry"_s, u"com.example.App"_s},
                                {u"sound-name"_s, u"message-new-instant"_s},
                                {u"urgency"_s, QVariant::fromValue<uchar>(1)}};
        const QVariantList expected{u"Tidemark"_s, 0U, QString(), u"<i>Shop</i>"_s, body, actions, hints, -1};
        QCOMPARE(m_service->notifications.constFirst(), expected);
    }

    void clicksArriveWhereThereAreActions() {
        NotificationRequest silent = titled(u"silent"_s);
        silent.actions.clear();
        show(silent);
        show(titled(u"two"_s));
        show(titled(u"three"_s));
        QCOMPARE(m_service->notifications.constFirst().at(5), QStringList());
        m_service->emitSignal(actionInvoked, {1U, u"default"_s});
        for (const uint id : {3U, 2U, 2U})
            click(id);
        QCOMPARE(m_clicks, (QStringList{u"three"_s, u"two"_s, u"two"_s}));
        m_service->emitSignal(actionInvoked, {2U, u"more"_s});
        QTRY_COMPARE(m_clicks.constLast(), u"two+"_s);
    }

    void onlyItsOwnSignalsCount() {
        show(titled(u"one"_s));
        FakeNotificationService stranger;
        stranger.emitSignal(actionInvoked, {1U, u"default"_s});
        stranger.emitSignal(notificationClosed, {1U, 2U});
        stranger.appear();  // waits for the bus, which then has passed on the signals
        m_service->appear();
        m_service->emitSignal(notificationClosed, {77U, 2U});
        for (const auto& arguments : {QVariantList{1U, u"reply"_s}, {1, u"default"_s}, {u"1"_s}, {}})
            m_service->emitSignal(actionInvoked, arguments);
        click(1);
        QCOMPARE(m_clicks, QStringList{u"one"_s});
    }

    void signalsMayOvertakeTheAnswer() {
        show(titled(u"one"_s));
        m_service->early = {{actionInvoked, {2U, u"default"_s}}, {notificationClosed, {2U, 2U}}};
        show(titled(u"two"_s));
        m_service->early = {{notificationClosed, {3U, 2U}}, {actionInvoked, {3U, u"default"_s}}};
        show(titled(u"three"_s));
        // Early signals have been handled when a later click arrives.
        m_service->emitSignal(actionInvoked, {1U, u"default"_s});
        QTRY_COMPARE(m_clicks.count(u"one"_s), 1);
        QCOMPARE(m_clicks.count(u"two"_s), 1);
        QCOMPARE(m_clicks.count(u"three"_s), 0);
    }

    void tokenIsThereBeforeTheClick() {
        show(titled(u"one"_s));
        m_service->emitSignal(u"ActivationToken"_s, {7U, u"of another"_s});
        click(1);
        QCOMPARE(m_token, QByteArray());
        m_service->emitSignal(u"ActivationToken"_s, {1U, u"tok-1"_s});
        click(1);
        QCOMPARE(m_token, QByteArray("tok-1"));
    }

    void knowsTheNextServiceAnew() {
        show(titled(u"one"_s));
        click(1);
        m_service = std::make_unique<FakeNotificationService>();
        m_service->appear();
        m_service->capabilities = QStringList{u"actions"_s, u"body-markup"_s};
        // The new service counts its ids from 1 again, and gives the first one to another program.
        m_service->nextId = 2;
        m_service->emitSignal(actionInvoked, {1U, u"default"_s});
        show(titled(u"two"_s));
        QVERIFY(m_service->notifications.constFirst().at(4).toString().contains("&amp;"_L1));
        click(2);
        QCOMPARE(m_clicks, (QStringList{u"one"_s, u"two"_s}));
    }

    void silentServiceGetsFewCalls() {
        m_service->isSilent = true;
        for (int i = 0; i < 2000; ++i)
            m_center->add(titled(u"lost"_s));
        QTRY_VERIFY(m_service->callCount > 0);
        QTest::qWait(50);
        QVERIFY2(m_service->callCount <= 500, qPrintable(QString::number(m_service->callCount)));

        // When the service is gone, notifications are sent to its successor again.
        m_service = std::make_unique<FakeNotificationService>();
        m_service->appear();
        const auto isShown = [this] {
            m_center->add(titled(u"shown"_s));
            return !m_service->notifications.isEmpty();
        };
        QTRY_VERIFY(isShown());
    }

    void silentServiceDoesNotHoldUpTheEnd() {
        m_service->isSilent = true;
        m_center->add(titled(u"lost"_s));
        QTRY_VERIFY(m_service->callCount > 0);
        bool hasLoopRun = false;
        QMetaObject::invokeMethod(this, [&hasLoopRun] { hasLoopRun = true; }, Qt::QueuedConnection);
        m_center.reset();
        QVERIFY(!hasLoopRun);
        QTRY_VERIFY(hasLoopRun);
    }

    void tellsWhatNobodyShowed() {
        int dropped = 0;
        const auto add = [this, &dropped] { m_center->add(titled(u"one"_s), [&dropped] { ++dropped; }); };
        add();
        QTRY_COMPARE(m_service->notifications.size(), 1);
        // The service exits before it has answered.
        m_service->isSilent = true;
        const int before = m_service->callCount;
        add();
        QTRY_COMPARE(m_service->callCount, before + 1);
        QCOMPARE(dropped, 0);
        m_service.reset();
        QTRY_COMPARE(dropped, 1);
        const QDBusConnection noBus(u"none"_s);
        m_center = std::make_unique<DBusNotificationCenter>(u"Tidemark"_s, u"com.example.App"_s, noBus);
        add();
        QCOMPARE(dropped, 1);
        QTRY_COMPARE(dropped, 2);
    }

    void forgetsTheOldestOfMany() {
        for (int shown = 1; shown <= 600; ++shown) {
            m_center->add(titled(QString::number(shown)));
            // Some answers to one batch may be pending during the next. Two batches are fewer than the limit.
            if (shown % 200 == 0)
                QTRY_COMPARE(m_service->notifications.size(), shown);
        }
        m_service->emitSignal(actionInvoked, {1U, u"default"_s});
        click(600);
        // Notifications that are posted together may be shown in another order.
        QCOMPARE(m_clicks, QStringList{m_service->notifications.constLast().at(3).toString()});
    }

private:
    /// Posts a notification and waits until it is shown.
    void show(const NotificationRequest& request) {
        const qsizetype before = m_service->notifications.size();
        m_center->add(request);
        QVERIFY(QTest::qWaitFor([&] { return m_service->notifications.size() > before; }, hangLimit));
    }

    /// Clicks and waits until the click and all earlier signals have been handled.
    void click(uint id) {
        const qsizetype before = m_clicks.size();
        m_service->emitSignal(actionInvoked, {id, u"default"_s});
        QVERIFY(QTest::qWaitFor([&] { return m_clicks.size() > before; }, hangLimit));
    }

    std::unique_ptr<FakeNotificationService> m_service;
    std::unique_ptr<DBusNotificationCenter> m_center;
    /// The title of each notification that was clicked.
    QStringList m_clicks;
    /// The activation token in the environment during the last click.
    QByteArray m_token;
};

}  // namespace
}  // namespace tidemark

TIDEMARK_TEST(tidemark::NotificationCenterTest)
#include "NotificationCenterTest.moc"
