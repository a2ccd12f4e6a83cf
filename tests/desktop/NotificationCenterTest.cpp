#include "FakeNotificationService.h"
#include "desktop/DBusNotificationCenter.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTest>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

using UserInfo = NotificationCenter::UserInfo;

UserInfo info(const QString& text) {
    return {{u"key"_s, text}};
}

NotificationRequest request(const QString& title, const UserInfo& userInfo = {}) {
    return {
        .identifier = u"id-"_s + title, .title = title, .body = u"a & <b>\"c\"</b>"_s, .userInfo = userInfo};
}

bool isNobodyThere() {
    return !QDBusConnection::sessionBus().interface()->isServiceRegistered(
        u"org.freedesktop.Notifications"_s);
}

class NotificationCenterTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void sendsWhatTheServiceUnderstands_data();
    void sendsWhatTheServiceUnderstands();
    void clickArrivesAsUserInfo();
    void clickNeedsUserInfo();
    void onlyItsOwnSignalsCount_data();
    void onlyItsOwnSignalsCount();
    void signalsMayOvertakeTheAnswer_data();
    void signalsMayOvertakeTheAnswer();
    void tokenIsThereBeforeTheClick();
    void dropsWhatNobodyShows();
    void knowsTheNextServiceAnew();
    void silentServiceGetsFewCalls();
    void nonsenseIsNoNumber();
    void forgetsTheOldestOfMany();
    void worksWithoutABus();

private:
    /// Posts and waits until it is shown.
    void show(const NotificationRequest& shown);
    /// A signal of the service arrives after everything that was sent before.
    void clickAndSettle(uint id);

    std::unique_ptr<FakeNotificationService> m_service;
    std::unique_ptr<DBusNotificationCenter> m_center;
    QList<UserInfo> m_clicks;
};

void NotificationCenterTest::initTestCase() {
    // Whatever service is installed on this machine must not be started by our calls.
    QDir folder(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
    QVERIFY(folder.mkpath(u"dbus-1/services"_s));
    QFile entry(folder.filePath(u"dbus-1/services/none.service"_s));
    QVERIFY(entry.open(QIODevice::WriteOnly));
    entry.write("[D-BUS Service]\nName=org.freedesktop.Notifications\nExec=/bin/false\n");
    entry.close();
    QDBusConnection::sessionBus().call(QDBusMessage::createMethodCall(
        u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s, u"ReloadConfig"_s));
}

void NotificationCenterTest::init() {
    m_service = std::make_unique<FakeNotificationService>();
    m_service->appear();
    m_center = std::make_unique<DBusNotificationCenter>(u"Tidemark"_s, u"com.example.App"_s,
                                                        QDBusConnection::sessionBus());
    m_center->setResponseHandler([this](const UserInfo& userInfo) { m_clicks.append(userInfo); });
    m_clicks.clear();
    qunsetenv("XDG_ACTIVATION_TOKEN");
}

void NotificationCenterTest::cleanup() {
    m_center.reset();
    m_service.reset();
    QVERIFY(QTest::qWaitFor(isNobodyThere));
}

void NotificationCenterTest::show(const NotificationRequest& shown) {
    const qsizetype before = m_service->notifications.size();
    m_center->add(shown);
    QVERIFY(QTest::qWaitFor([&] { return m_service->notifications.size() > before; }));
}

void NotificationCenterTest::clickAndSettle(uint id) {
    const qsizetype before = m_clicks.size();
    m_service->emitSignal(u"ActionInvoked"_s, {id, u"default"_s});
    QVERIFY(QTest::qWaitFor([&] { return m_clicks.size() > before; }));
}

void NotificationCenterTest::sendsWhatTheServiceUnderstands_data() {
    QTest::addColumn<QVariant>("capabilities");
    QTest::addColumn<QString>("body");
    QTest::addColumn<QStringList>("actions");
    const QString plain = u"a & <b>\"c\"</b>"_s;
    const QString escaped = u"a &amp; &lt;b&gt;&quot;c&quot;&lt;/b&gt;"_s;
    const QStringList none;
    const QStringList open{u"default"_s, u"Open"_s};
    const auto list = [](const QStringList& names) { return QVariant(names); };
    QTest::newRow("nothing") << list({}) << plain << none;
    QTest::newRow("markup") << list({u"body"_s, u"body-markup"_s}) << escaped << none;
    QTest::newRow("actions") << list({u"actions"_s, u"body"_s}) << plain << open;
    QTest::newRow("everything") << list({u"actions"_s, u"body-markup"_s, u"sound"_s, u"x"_s}) << escaped
                                << open;
    QTest::newRow("similar names") << list({u"action-icons"_s, u"body-markups"_s}) << plain << none;
    QTest::newRow("an error") << QVariant() << plain << none;
    QTest::newRow("nonsense") << QVariant(uint(7)) << plain << none;
}

void NotificationCenterTest::sendsWhatTheServiceUnderstands() {
    QFETCH(QVariant, capabilities);
    m_service->capabilities = capabilities;
    show(request(u"<i>Shop</i>"_s, info(u"a"_s)));
    const auto& shown = m_service->notifications.constFirst();
    QCOMPARE(shown.applicationName, u"Tidemark"_s);
    QCOMPARE(shown.replacesId, uint(0));
    QCOMPARE(shown.icon, QString());
    QCOMPARE(shown.title, u"<i>Shop</i>"_s);
    QTEST(shown.body, "body");
    QTEST(shown.actions, "actions");
    QCOMPARE(shown.expiry, -1);
    const QVariantMap hints{{u"desktop-entry"_s, u"com.example.App"_s},
                            {u"sound-name"_s, u"message-new-instant"_s},
                            {u"urgency"_s, QVariant::fromValue<uchar>(1)}};
    QCOMPARE(shown.hints, hints);
}

void NotificationCenterTest::clickArrivesAsUserInfo() {
    show(request(u"one"_s, info(u"a"_s)));
    show(request(u"two"_s, info(u"b"_s)));
    clickAndSettle(2);
    clickAndSettle(1);
    clickAndSettle(1);
    const QList expected{info(u"b"_s), info(u"a"_s), info(u"a"_s)};
    QCOMPARE(m_clicks, expected);
}

void NotificationCenterTest::clickNeedsUserInfo() {
    show(request(u"one"_s));
    QCOMPARE(m_service->notifications.constFirst().actions, QStringList());
    m_service->emitSignal(u"ActionInvoked"_s, {1U, u"default"_s});
    show(request(u"two"_s, info(u"b"_s)));
    clickAndSettle(2);
    QCOMPARE(m_clicks, QList{info(u"b"_s)});
}

void NotificationCenterTest::onlyItsOwnSignalsCount_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariantList>("arguments");
    QTest::addColumn<bool>("isFromAnother");
    const auto row = [](const char* label, const QString& name, const QVariantList& arguments,
                        bool isFromAnother = false) {
        QTest::newRow(label) << name << arguments << isFromAnother;
    };
    const QString invoked = u"ActionInvoked"_s;
    row("another program's number", invoked, {77U, u"default"_s});
    row("another action", invoked, {1U, u"reply"_s});
    row("number of another type", invoked, {1, u"default"_s});
    row("text for a number", invoked, {u"1"_s, u"default"_s});
    row("no action", invoked, {1U});
    row("nothing at all", invoked, {});
    row("another signal", u"NotificationReplied"_s, {1U, u"default"_s});
    row("another's click", invoked, {1U, u"default"_s}, true);
    row("another's end", u"NotificationClosed"_s, {1U, 2U}, true);
    row("end of another's", u"NotificationClosed"_s, {77U, 2U});
}

void NotificationCenterTest::onlyItsOwnSignalsCount() {
    QFETCH(QString, name);
    QFETCH(QVariantList, arguments);
    QFETCH(bool, isFromAnother);
    show(request(u"one"_s, info(u"a"_s)));
    clickAndSettle(1);
    if (isFromAnother) {
        auto stranger = std::make_unique<FakeNotificationService>();
        stranger->emitSignal(name, arguments);
        stranger->appear();  // waits for the bus, so the signals are on their way
        m_service->appear();
    } else {
        m_service->emitSignal(name, arguments);
    }
    clickAndSettle(1);
    const QList expected{info(u"a"_s), info(u"a"_s)};
    QCOMPARE(m_clicks, expected);
}

void NotificationCenterTest::signalsMayOvertakeTheAnswer_data() {
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<int>("clicks");
    QTest::newRow("click") << QStringList{u"ActionInvoked"_s} << 1;
    QTest::newRow("click and end") << QStringList{u"ActionInvoked"_s, u"NotificationClosed"_s} << 1;
    QTest::newRow("end before the click") << QStringList{u"NotificationClosed"_s, u"ActionInvoked"_s} << 0;
}

void NotificationCenterTest::signalsMayOvertakeTheAnswer() {
    QFETCH(QStringList, names);
    QFETCH(int, clicks);
    show(request(u"one"_s, info(u"a"_s)));
    for (const auto& name : names)
        m_service->early.append(
            {name, {2U, name == u"ActionInvoked"_s ? QVariant(u"default"_s) : QVariant(2U)}});
    show(request(u"two"_s, info(u"b"_s)));
    // Whatever came early has been looked at when a later click arrives.
    m_service->emitSignal(u"ActionInvoked"_s, {1U, u"default"_s});
    QTRY_COMPARE(m_clicks.count(info(u"a"_s)), 1);
    QCOMPARE(m_clicks.count(info(u"b"_s)), clicks);
}

void NotificationCenterTest::tokenIsThereBeforeTheClick() {
    show(request(u"one"_s, info(u"a"_s)));
    QByteArray token;
    m_center->setResponseHandler([&](const UserInfo& userInfo) {
        token = qgetenv("XDG_ACTIVATION_TOKEN");
        m_clicks.append(userInfo);
    });
    m_service->emitSignal(u"ActivationToken"_s, {7U, u"of another"_s});
    clickAndSettle(1);
    QCOMPARE(token, QByteArray());
    m_service->emitSignal(u"ActivationToken"_s, {1U, u"tok-1"_s});
    clickAndSettle(1);
    QCOMPARE(token, QByteArray("tok-1"));
}

void NotificationCenterTest::dropsWhatNobodyShows() {
    m_service.reset();
    QVERIFY(QTest::qWaitFor(isNobodyThere));
    for (int i = 0; i < 100; ++i)
        m_center->add(request(u"early"_s));
    // The bus keeps calls back while it tries to start a service.
    QDBusMessage start = QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                                        u"org.freedesktop.DBus"_s, u"StartServiceByName"_s);
    start << u"org.freedesktop.Notifications"_s << 0U;
    QCOMPARE(QDBusConnection::sessionBus().call(start).type(), QDBusMessage::ErrorMessage);

    m_service = std::make_unique<FakeNotificationService>();
    m_service->appear();
    QCoreApplication::processEvents();
    show(request(u"late"_s));
    QCOMPARE(m_service->notifications.constFirst().title, u"late"_s);
}

void NotificationCenterTest::knowsTheNextServiceAnew() {
    show(request(u"one"_s, info(u"a"_s)));
    clickAndSettle(1);
    auto next = std::make_unique<FakeNotificationService>();
    next->capabilities = QStringList{u"actions"_s, u"body-markup"_s};
    next->appear();
    m_service = std::move(next);

    // Its numbers begin again, and the first is another program's.
    m_service->nextId = 2;
    m_service->emitSignal(u"ActionInvoked"_s, {1U, u"default"_s});
    show(request(u"two"_s, info(u"b"_s)));
    QVERIFY(m_service->notifications.constFirst().body.contains(u"&amp;"_s));
    clickAndSettle(2);
    const QList expected{info(u"a"_s), info(u"b"_s)};
    QCOMPARE(m_clicks, expected);
}

void NotificationCenterTest::silentServiceGetsFewCalls() {
    m_service->isSilent = true;
    for (int i = 0; i < 1000; ++i)
        m_center->add(request(u"lost"_s, info(u"a"_s)));
    QTRY_VERIFY(m_service->callCount > 0);
    QTest::qWait(50);
    QVERIFY2(m_service->callCount <= 20, qPrintable(QString::number(m_service->callCount)));
    // Signals that might be about one of those do not pile up either.
    for (uint id = 0; id < 1000; ++id)
        m_service->emitSignal(u"ActionInvoked"_s, {id, u"default"_s});

    // Once it is gone there is room again for its successor's.
    m_service = std::make_unique<FakeNotificationService>();
    m_service->appear();
    const auto isShown = [this] {
        m_center->add(request(u"shown"_s, info(u"b"_s)));
        return !m_service->notifications.isEmpty();
    };
    QTRY_VERIFY(isShown());
    clickAndSettle(1);
    QCOMPARE(m_clicks, QList{info(u"b"_s)});
}

void NotificationCenterTest::nonsenseIsNoNumber() {
    m_service->wrongAnswer = u"1"_s;
    show(request(u"one"_s, info(u"a"_s)));
    show(request(u"two"_s, info(u"b"_s)));
    clickAndSettle(1);
    QCOMPARE(m_clicks, QList{info(u"b"_s)});
}

void NotificationCenterTest::forgetsTheOldestOfMany() {
    constexpr uint many = 100;
    for (uint i = 1; i <= many; ++i)
        show(request(u"x"_s, info(QString::number(i))));
    clickAndSettle(many);
    m_service->emitSignal(u"ActionInvoked"_s, {1U, u"default"_s});
    clickAndSettle(many - 10);
    const QList expected{info(u"100"_s), info(u"90"_s)};
    QCOMPARE(m_clicks, expected);
}

void NotificationCenterTest::worksWithoutABus() {
    DBusNotificationCenter center(u"Tidemark"_s, u"com.example.App"_s,
                                  QDBusConnection(u"no such connection"_s));
    center.requestAuthorization();
    center.setResponseHandler([](const UserInfo& /*userInfo*/) { QFAIL("nobody clicked"); });
    center.add(request(u"nowhere"_s, info(u"a"_s)));
    QCoreApplication::processEvents();
}

}  // namespace
}  // namespace tidemark

QTEST_GUILESS_MAIN(tidemark::NotificationCenterTest)
#include "NotificationCenterTest.moc"
