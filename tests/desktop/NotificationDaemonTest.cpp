#include "desktop/DBusNotificationCenter.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

using UserInfo = NotificationCenter::UserInfo;

const QString daemonName = u"org.freedesktop.Notifications"_s;
const QString daemonPath = u"/org/freedesktop/Notifications"_s;

/// A notification daemon that ordinary users run.
class NotificationDaemonTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void textArrives_data();
    void textArrives();
    void clickOnTheScreenArrives();

private:
    void startDaemon(const QByteArray& markup);
    [[nodiscard]] static QVariant property(const QString& name);
    static QDBusMessage call(const QString& method, const QVariantList& arguments = {});

    QProcess m_daemon;
    std::unique_ptr<DBusNotificationCenter> m_center;
    QList<UserInfo> m_clicks;
};

void NotificationDaemonTest::init() {
    m_center = std::make_unique<DBusNotificationCenter>(u"Tidemark"_s, u"com.example.App"_s,
                                                        QDBusConnection::sessionBus());
    m_center->setResponseHandler([this](const UserInfo& userInfo) { m_clicks.append(userInfo); });
    m_clicks.clear();
}

void NotificationDaemonTest::cleanup() {
    m_center.reset();
    m_daemon.terminate();
    m_daemon.waitForFinished();
    QTRY_VERIFY(!QDBusConnection::sessionBus().interface()->isServiceRegistered(daemonName));
}

void NotificationDaemonTest::startDaemon(const QByteArray& markup) {
    QFile config(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u"/dunstrc"_s);
    QVERIFY(config.open(QIODevice::WriteOnly));
    config.write(
        "[global]\norigin = top-left\noffset = 0x0\nwidth = 300\n"
        "mouse_left_click = do_action, close_current\nmarkup = " +
        markup + '\n');
    config.close();
    m_daemon.start(u"dunst"_s, {u"-conf"_s, config.fileName()});
    QVERIFY(m_daemon.waitForStarted());
    QTRY_VERIFY(QDBusConnection::sessionBus().interface()->isServiceRegistered(daemonName));
}

QDBusMessage NotificationDaemonTest::call(const QString& method, const QVariantList& arguments) {
    QDBusMessage message =
        QDBusMessage::createMethodCall(daemonName, daemonPath, u"org.dunstproject.cmd0"_s, method);
    message.setArguments(arguments);
    return QDBusConnection::sessionBus().call(message);
}

QVariant NotificationDaemonTest::property(const QString& name) {
    QDBusMessage message = QDBusMessage::createMethodCall(daemonName, daemonPath,
                                                          u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    message << u"org.dunstproject.cmd0"_s << name;
    const QDBusMessage reply = QDBusConnection::sessionBus().call(message);
    return reply.arguments().value(0).value<QDBusVariant>().variant();
}

void NotificationDaemonTest::textArrives_data() {
    QTest::addColumn<QByteArray>("markup");
    QTest::newRow("with markup") << QByteArray("full");
    QTest::newRow("without markup") << QByteArray("no");
}

void NotificationDaemonTest::textArrives() {
    QFETCH(QByteArray, markup);
    startDaemon(markup);
    m_center->add({.identifier = u"a-1.0"_s,
                   .title = u"<i>Shop</i> & Co"_s,
                   .body = u"⏳ Building  →  ✅ <b>Ready</b> & \"done\""_s,
                   .userInfo = {{u"key"_s, u"a"_s}}});
    QTRY_COMPARE(property(u"displayedLength"_s).toUInt(), 1U);
    call(u"NotificationCloseAll"_s);
    QTRY_COMPARE(property(u"historyLength"_s).toUInt(), 1U);
    const auto history =
        qdbus_cast<QList<QVariantMap>>(call(u"NotificationListHistory"_s).arguments().constFirst());
    const QVariantMap& shown = history.constFirst();
    QCOMPARE(shown.value(u"appname"_s).toString(), u"Tidemark"_s);
    // What it draws: markup of its own around our texts, each character of which stands for itself.
    QCOMPARE(shown.value(u"message"_s).toString(),
             u"<b>&lt;i&gt;Shop&lt;/i&gt; &amp; Co</b>\n"
             "⏳ Building  →  ✅ &lt;b&gt;Ready&lt;/b&gt; &amp; &quot;done&quot;"_s);
    QCOMPARE(m_clicks, QList<UserInfo>());
}

void NotificationDaemonTest::clickOnTheScreenArrives() {
    startDaemon("no");
    const UserInfo userInfo{{u"inspectorUrl"_s, u"https://vercel.com/a"_s}};
    m_center->add({.identifier = u"a-1.0"_s, .title = u"Shop"_s, .body = u"Ready"_s, .userInfo = userInfo});
    QTRY_COMPARE(property(u"displayedLength"_s).toUInt(), 1U);
    // Displayed it may be, but not yet on the screen.
    const auto click = [this] {
        QProcess::execute(u"xdotool"_s, {u"mousemove"_s, u"60"_s, u"15"_s, u"click"_s, u"1"_s});
        return !m_clicks.isEmpty();
    };
    QTRY_VERIFY(click());
    QCOMPARE(m_clicks, QList{userInfo});
    QTRY_COMPARE(property(u"displayedLength"_s).toUInt(), 0U);
}

}  // namespace
}  // namespace tidemark

QTEST_GUILESS_MAIN(tidemark::NotificationDaemonTest)
#include "NotificationDaemonTest.moc"
