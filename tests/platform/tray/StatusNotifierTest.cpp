#include <sys/prctl.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QFileInfo>
#include <QProcess>
#include <QSignalSpy>
#include <array>
#include <optional>

#include "platform/tray/DBusStatusBar.h"
#include "platform/tray/DBusStatusItem.h"
#include "platform/tray/StatusNotifierRegistration.h"
#include "tests/TestProgram.h"
#include "tests/platform/tray/FakeStatusNotifierWatcher.h"
#include "tests/platform/tray/StatusNotifierHost.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

StatusImage square(const QColor& color) {
    return {QSizeF(16, 16), false, [color](QPainter& painter) { painter.fillRect(0, 0, 16, 16, color); }};
}

/// Has this process, which is the watcher's, pass for another one.
class ProcessName {
public:
    explicit ProcessName(const char* name) {
        prctl(PR_GET_NAME, m_former.data());
        prctl(PR_SET_NAME, name);
    }
    ProcessName(const ProcessName&) = delete;
    ProcessName& operator=(const ProcessName&) = delete;
    ~ProcessName() { restore(); }

    void restore() { prctl(PR_SET_NAME, m_former.data()); }

private:
    std::array<char, 16> m_former{};
};

class StatusNotifierTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void registersWithEveryWatcher_data();
    void registersWithEveryWatcher();
    void itemsKeepTheirOrder();
    void asksAgainAWatcherThatDidNotTakeIt_data();
    void asksAgainAWatcherThatDidNotTakeIt();
    void answersWhatPanelsRead();
    void textsComeFromLabelAndToolTip_data();
    void textsComeFromLabelAndToolTip();
    void signalsOnlyWhatAPanelWouldSee();
    void everyClickRunsTheAction_data();
    void everyClickRunsTheAction();
    void hasAMenuWhereItIsNeeded_data();
    void hasAMenuWhereItIsNeeded();
    void indicatorsGetAnEntryAndAFile();
    void actionMayDropTheItem();
    void aPanelIsKnownByWhatItReads();
    void droppedItemLeavesTheBus();
    void survivesTheEndOfTheBus();

private:
    void createItem(const QString& id = u"tidemark"_s);

    std::unique_ptr<FakeStatusNotifierWatcher> m_watcher;
    std::unique_ptr<DBusStatusBar> m_bar;
    std::unique_ptr<StatusItem> m_item;
    QString m_service;
};

void StatusNotifierTest::init() {
    m_watcher = std::make_unique<FakeStatusNotifierWatcher>();
    m_bar = std::make_unique<DBusStatusBar>(u"Tidemark"_s);
    m_service = u"org.kde.StatusNotifierItem-%1-1"_s.arg(QCoreApplication::applicationPid());
}

void StatusNotifierTest::cleanup() {
    m_item.reset();
    m_bar.reset();
    m_watcher.reset();
    // Names go asynchronously; the next test uses the same ones.
    auto* bus = QDBusConnection::sessionBus().interface();
    QTRY_VERIFY(!bus->isServiceRegistered(m_service));
    QTRY_VERIFY(!bus->isServiceRegistered(u"org.kde.StatusNotifierWatcher"_s));
}

void StatusNotifierTest::createItem(const QString& id) {
    m_item = m_bar->createStatusItem(id);
    QVERIFY(m_item);
    QTRY_VERIFY(QDBusConnection::sessionBus().interface()->isServiceRegistered(m_service));
}

void StatusNotifierTest::registersWithEveryWatcher_data() {
    QTest::addColumn<QString>("steps");
    QTest::newRow("watcher first") << "wi";
    QTest::newRow("watcher last") << "iw";
    QTest::newRow("watcher comes back") << "wi-w";
    QTest::newRow("another watcher takes over") << "wir";
    QTest::newRow("long without a watcher") << "iw-w-w";
}

void StatusNotifierTest::registersWithEveryWatcher() {
    QFETCH(QString, steps);
    const QStringList expected{m_service + u"/StatusNotifierItem"_s};
    for (const QChar step : steps) {
        if (step == u'i') {
            createItem();
        } else if (step == u'w') {
            m_watcher = std::make_unique<FakeStatusNotifierWatcher>();
            m_watcher->appear();
        } else if (step == u'-') {
            QTRY_COMPARE(m_watcher->items(), expected);
            m_watcher.reset();
        } else {
            QTRY_COMPARE(m_watcher->items(), expected);
            auto successor = std::make_unique<FakeStatusNotifierWatcher>();
            successor->appear();
            m_watcher = std::move(successor);
        }
    }
    QTRY_COMPARE(m_watcher->items(), expected);
    QCOMPARE(m_watcher->registrations, 1);
}

void StatusNotifierTest::itemsKeepTheirOrder() {
    StatusNotifierQueue queue;
    QList<int> places;
    for (int i = 0; i < 4; ++i)
        places.append(queue.takePlace());
    QList<int> order;
    for (const int i : {2, 0, 3, 1}) {
        queue.enqueue(queue, places.at(i), [&order, &queue, i] {
            order.append(i);
            queue.noteRead();
        });
    }
    QTRY_COMPARE(order, (QList{0, 1, 2, 3}));
}

void StatusNotifierTest::asksAgainAWatcherThatDidNotTakeIt_data() {
    QTest::addColumn<int>("refusals");
    QTest::addColumn<int>("lapses");
    QTest::addColumn<int>("registrations");
    QTest::addColumn<int>("listReads");
    QTest::newRow("all is well") << 0 << 0 << 1 << 1;
    QTest::newRow("refused twice") << 2 << 0 << 3 << 1;
    QTest::newRow("forgotten once") << 0 << 1 << 2 << 2;
    QTest::newRow("refused for ever") << 1000 << 0 << 6 << 0;
    QTest::newRow("forgotten for ever") << 0 << 1000 << 6 << 6;
}

void StatusNotifierTest::asksAgainAWatcherThatDidNotTakeIt() {
    QFETCH(int, refusals);
    QFETCH(int, lapses);
    QFETCH(int, registrations);
    QFETCH(int, listReads);
    m_watcher->refusals = refusals;
    m_watcher->lapses = lapses;
    m_watcher->appear();
    const QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"item"_s);
    {
        using namespace std::chrono_literals;
        StatusNotifierRegistration registration(
            bus, bus.baseService(), std::make_shared<StatusNotifierQueue>(), [](TrayHost) {}, 2ms);
        QTRY_COMPARE(m_watcher->registrations, registrations);
        QTRY_COMPARE(m_watcher->listReads, listReads);
        // Longer than the longest of the waits between attempts.
        QTest::qWait(150);
        QCOMPARE(m_watcher->registrations, registrations);
        QCOMPARE(m_watcher->listReads, listReads);
    }
    QDBusConnection::disconnectFromBus(u"item"_s);
}

void StatusNotifierTest::answersWhatPanelsRead() {
    createItem(u"tidemark-prj_1"_s);
    m_item->setImage(square(Qt::blue));
    const StatusNotifierHost host(m_service);
    const QDBusMessage reply = host.allProperties();
    const auto all = qdbus_cast<QVariantMap>(reply.arguments().constFirst());
    const auto text = [&all](const char* name) { return all.value(QLatin1String(name)).toString(); };
    QCOMPARE(text("Category"), u"ApplicationStatus"_s);
    QCOMPARE(text("Id"), u"tidemark-prj_1"_s);
    QCOMPARE(text("Status"), u"Active"_s);
    QCOMPARE(all.value(u"ItemIsMenu"_s), QVariant(false));
    QCOMPARE(all.value(u"Menu"_s).value<QDBusObjectPath>().path(), u"/MenuBar"_s);
    for (const char* name : {"IconName", "OverlayIconName", "AttentionIconName", "IconThemePath"}) {
        QVERIFY2(all.contains(QLatin1String(name)), name);
        QCOMPARE(text(name), QString());
    }
    const auto signature = [&all](const QString& name) {
        return all.value(name).value<QDBusArgument>().currentSignature();
    };
    QCOMPARE(signature(u"IconPixmap"_s), u"a(iiay)"_s);
    QCOMPARE(signature(u"ToolTip"_s), u"(sa(iiay)ss)"_s);
    const auto icon = qdbus_cast<IconPixmaps>(all.value(u"IconPixmap"_s));
    QCOMPARE(icon, statusIconPixmaps(square(Qt::blue), {}));
}

void StatusNotifierTest::textsComeFromLabelAndToolTip_data() {
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("toolTip");
    QTest::addColumn<QString>("expectedTitle");
    QTest::newRow("nothing set") << "" << "" << "Tidemark";
    QTest::newRow("label") << "3 live" << "" << "Tidemark — 3 live";
    QTest::newRow("tool tip") << "" << "api_1: READY" << "api_1: READY";
    QTest::newRow("tool tip and label") << "3 live" << "web: loading…" << "web: loading…";
}

void StatusNotifierTest::textsComeFromLabelAndToolTip() {
    QFETCH(QString, label);
    QFETCH(QString, toolTip);
    createItem();
    m_item->setDot(Qt::green);
    m_item->setLabel(label);
    m_item->setToolTip(toolTip);
    const StatusNotifierHost host(m_service);
    QTEST(host.property(u"Title"_s).toString(), "expectedTitle");
    QTEST(host.toolTipTitle(), "expectedTitle");
    QCOMPARE(host.property(u"XAyatanaLabel"_s).toString(), label);
}

void StatusNotifierTest::signalsOnlyWhatAPanelWouldSee() {
    createItem();
    StatusNotifierHost host(m_service);
    m_item->setImage(square(Qt::blue));
    m_item->setDot(Qt::green);
    m_item->setLabel(u"3 live"_s);
    QCOMPARE(host.takeSignals(), QStringList());  // nobody has read anything yet
    QVERIFY(!qdbus_cast<IconPixmaps>(host.property(u"IconPixmap"_s)).isEmpty());

    m_item->setImage(square(Qt::blue));
    m_item->setDot(Qt::green);
    m_item->setLabel(u"3 live"_s);
    QCOMPARE(host.takeSignals(), QStringList());

    m_item->setDot(Qt::red);
    m_item->setLabel(u"3 live"_s);
    QCOMPARE(host.takeSignals(), QStringList{u"NewIcon"_s});

    m_item->setDot(Qt::red);
    m_item->setLabel(u"1 error"_s);
    const QStringList texts{u"NewTitle"_s, u"NewToolTip"_s, u"XAyatanaNewLabel"_s};
    QCOMPARE(host.takeSignals(), texts);

    m_item->setToolTip(u"api: READY"_s);
    m_item->setToolTip(QString());
    m_item->setImage(square(Qt::cyan));
    m_item->setImage(square(Qt::blue));
    QCOMPARE(host.takeSignals(), QStringList());  // the same again at the end of the turn

    m_item->setImage(square(Qt::cyan));
    m_item->setDot(Qt::green);
    m_item->setLabel({});
    QCOMPARE(host.takeSignals(), texts + QStringList{u"NewIcon"_s});
    const auto icon = qdbus_cast<IconPixmaps>(host.property(u"IconPixmap"_s));
    QCOMPARE(icon, statusIconPixmaps(square(Qt::cyan), Qt::green));
}

void StatusNotifierTest::everyClickRunsTheAction_data() {
    QTest::addColumn<QString>("method");
    QTest::addColumn<QPoint>("place");
    QTest::newRow("left") << "Activate" << QPoint(1270, 12);
    QTest::newRow("middle") << "SecondaryActivate" << QPoint(0, 28);
    QTest::newRow("right") << "ContextMenu" << QPoint(-1920, 5);
}

void StatusNotifierTest::everyClickRunsTheAction() {
    QFETCH(QString, method);
    QFETCH(QPoint, place);
    createItem();
    const StatusNotifierHost host(m_service);
    QCOMPARE(host.callItem(method, {1, 2}).type(), QDBusMessage::ReplyMessage);  // without an action
    QList<QPoint> places;
    m_item->setAction([&places](QPoint point) { places.append(point); });
    QCOMPARE(host.callItem(u"Scroll"_s, {120, u"vertical"_s}).type(), QDBusMessage::ReplyMessage);
    QCOMPARE(host.callItem(method, {place.x(), place.y()}).type(), QDBusMessage::ReplyMessage);
    QTRY_COMPARE(places, QList<QPoint>{place});
}

void StatusNotifierTest::hasAMenuWhereItIsNeeded_data() {
    QTest::addColumn<QByteArray>("watcher");
    QTest::addColumn<bool>("isNeeded");
    QTest::newRow("GNOME") << QByteArray("gnome-shell") << true;
    QTest::newRow("unknown") << QByteArray("somebody") << true;
    QTest::newRow("MATE") << QByteArray("notification-area-applet") << false;
    QTest::newRow("waybar") << QByteArray("waybar") << false;
}

void StatusNotifierTest::hasAMenuWhereItIsNeeded() {
    QFETCH(QByteArray, watcher);
    QFETCH(bool, isNeeded);
    const ProcessName name(watcher.constData());
    m_watcher->appear();
    createItem();
    QTRY_COMPARE(m_watcher->registrations, 1);
    const StatusNotifierHost host(m_service);
    const auto all = [&host] {
        return qdbus_cast<QVariantMap>(host.allProperties().arguments().constFirst());
    };
    QCOMPARE(all().contains(u"Menu"_s), isNeeded);
    QCOMPARE(host.property(u"Menu"_s).isValid(), isNeeded);
    QCOMPARE(all().size(), isNeeded ? 16 : 15);
    // An item that is its menu has it everywhere.
    m_item->setMenu({{.identifier = u"a"_s, .title = u"a"_s}});
    QVERIFY(all().contains(u"Menu"_s));
}

void StatusNotifierTest::indicatorsGetAnEntryAndAFile() {
    ProcessName name("ayatana-indicator-application-service");
    m_watcher->appear();
    createItem();
    int clicks = 0;
    m_item->setAction([&clicks](QPoint) { ++clicks; });
    m_item->setImage(square(Qt::green));
    QTRY_COMPARE(m_watcher->registrations, 1);
    StatusNotifierHost host(m_service);
    // A tray that is slow reads all at once, after a change.
    m_item->setImage(square(Qt::blue));
    QCoreApplication::processEvents();
    QCOMPARE(host.allProperties().type(), QDBusMessage::ReplyMessage);
    const auto shown = [&host] {
        const QString folder = host.property(u"IconThemePath"_s).toString();
        const QString name = host.property(u"IconName"_s).toString();
        return QImage(folder + u'/' + name + u".png"_s).pixelColor(16, 16);
    };
    QCOMPARE(shown(), QColor(Qt::blue));
    QVERIFY(m_bar->hasHost());
    host.takeSignals();
    m_item->setImage(square(Qt::red));
    QTRY_COMPARE(shown(), QColor(Qt::red));
    QCOMPARE(host.takeSignals(), QStringList{u"NewIcon"_s});

    const QDBusMessage reply = host.callMenu(u"GetLayout"_s, {0, -1, QStringList()});
    const auto menu = qdbus_cast<DBusMenuLayout>(reply.arguments().value(1));
    QCOMPARE(menu.children.size(), 1);
    const auto entry = qdbus_cast<DBusMenuLayout>(menu.children.constFirst().variant());
    QCOMPARE(entry.properties.value(u"label"_s), QVariant(u"Open Tidemark"_s));
    const QVariantList click{entry.id, u"clicked"_s, QVariant::fromValue(QDBusVariant(0)), 0U};
    QCOMPARE(host.callMenu(u"Event"_s, click).type(), QDBusMessage::ReplyMessage);
    QCOMPARE(host.callItem(u"XAyatanaSecondaryActivate"_s, {0U}).type(), QDBusMessage::ReplyMessage);
    QTRY_COMPARE(clicks, 2);

    // Another tray takes over.
    name.restore();
    const QString folder = host.property(u"IconThemePath"_s).toString();
    auto successor = std::make_unique<FakeStatusNotifierWatcher>();
    successor->appear();
    m_watcher = std::move(successor);
    QTRY_COMPARE(m_watcher->registrations, 1);
    QCOMPARE(host.property(u"IconName"_s), QVariant(QString()));
    QVERIFY(!QFileInfo::exists(folder));
}

void StatusNotifierTest::actionMayDropTheItem() {
    createItem();
    const StatusNotifierHost host(m_service);
    const auto marker = std::make_shared<int>(0);
    m_item->setAction([this, marker](QPoint) {
        m_item.reset();
        ++*marker;
    });
    QCOMPARE(host.callItem(u"Activate"_s, {1, 1}).type(), QDBusMessage::ReplyMessage);
    QTRY_COMPARE(*marker, 1);
    QVERIFY(!m_item);
}

void StatusNotifierTest::aPanelIsKnownByWhatItReads() {
    // A watcher alone shows nothing.
    m_watcher->lapses = 1;
    m_watcher->appear();
    createItem();
    QTRY_COMPARE(m_watcher->registrations, 1);
    QVERIFY(!m_bar->hasHost());
    m_watcher = std::make_unique<FakeStatusNotifierWatcher>();
    m_watcher->appear();
    QTRY_VERIFY(m_bar->hasHost());
    m_watcher.reset();
    QVERIFY(m_bar->hasHost());
}

void StatusNotifierTest::droppedItemLeavesTheBus() {
    m_watcher->appear();
    createItem();
    const auto other = m_bar->createStatusItem(u"tidemark-prj_1"_s);
    QTRY_COMPARE(m_watcher->registrations, 2);
    auto* bus = QDBusConnection::sessionBus().interface();
    const qsizetype names = bus->registeredServiceNames().value().size();
    m_item.reset();
    QTRY_VERIFY(!bus->isServiceRegistered(m_service));
    // Its connection is closed as well: two names less.
    QTRY_COMPARE(bus->registeredServiceNames().value().size(), names - 2);
}

void StatusNotifierTest::survivesTheEndOfTheBus() {
    QProcess daemon;
    daemon.start(u"dbus-daemon"_s,
                 {u"--session"_s, u"--nofork"_s, u"--print-address"_s, u"--address=unix:tmpdir=/tmp"_s});
    QVERIFY(daemon.waitForReadyRead(hangLimit));
    const QString address = QString::fromUtf8(daemon.readLine()).trimmed();
    const QDBusConnection bus = QDBusConnection::connectToBus(address, u"mortal"_s);
    QVERIFY(bus.isConnected());
    DBusStatusItem item(bus, m_service, std::make_shared<StatusNotifierQueue>(), u"Tidemark"_s,
                        u"tidemark"_s);
    daemon.kill();
    QVERIFY(daemon.waitForFinished(hangLimit));
    QTRY_VERIFY(!bus.isConnected());
    item.setDot(Qt::red);
    item.setLabel(u"1 error"_s);
    item.setImage(square(Qt::blue));
    QCoreApplication::processEvents();
}

}  // namespace
}  // namespace tidemark

TIDEMARK_TEST(tidemark::StatusNotifierTest)
#include "StatusNotifierTest.moc"
