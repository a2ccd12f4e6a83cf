#include <sys/prctl.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QFileInfo>
#include <array>

#include "platform/tray/DBusStatusItem.h"
#include "tests/TestProgram.h"
#include "tests/fakes/EmptyBus.h"
#include "tests/platform/tray/StatusNotifierHost.h"
#include "tests/platform/tray/TrayScene.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

StatusImage square(const QColor& color) {
    return {QSizeF(16, 16), false, [color](QPainter& painter) { painter.fillRect(0, 0, 16, 16, color); }};
}

/// Renames this process, which owns the watcher, to look like another one.
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

/// An item on the bus, as panels see it.
class StatusNotifierTest final : public QObject, protected TrayScene {
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }
    void answersWhatPanelsRead() {
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

    void textsComeFromLabelAndToolTip() {
        createItem();
        m_item->setDot(Qt::green);
        const StatusNotifierHost host(m_service);
        const QList<std::array<QString, 3>> rows{{u""_s, u""_s, u"Tidemark"_s},
                                                 {u"3 live"_s, u""_s, u"Tidemark — 3 live"_s},
                                                 {u""_s, u"api_1: READY"_s, u"api_1: READY"_s},
                                                 {u"3 live"_s, u"web: loading…"_s, u"web: loading…"_s}};
        for (const auto& [label, toolTip, expectedTitle] : rows) {
            m_item->setLabel(label);
            m_item->setToolTip(toolTip);
            QCoreApplication::processEvents();
            QCOMPARE(host.property(u"Title"_s).toString(), expectedTitle);
            QCOMPARE(host.toolTipTitle(), expectedTitle);
            QCOMPARE(host.property(u"XAyatanaLabel"_s).toString(), label);
        }
    }

    void signalsOnlyWhatAPanelWouldSee() {
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
        QCOMPARE(host.takeSignals(), QStringList());  // unchanged at the end of the turn

        m_item->setImage(square(Qt::cyan));
        m_item->setDot(Qt::green);
        m_item->setLabel({});
        QCOMPARE(host.takeSignals(), texts + QStringList{u"NewIcon"_s});
        const auto icon = qdbus_cast<IconPixmaps>(host.property(u"IconPixmap"_s));
        QCOMPARE(icon, statusIconPixmaps(square(Qt::cyan), Qt::green));
    }

    void everyClickRunsTheAction() {
        createItem();
        const StatusNotifierHost host(m_service);
        const QStringList methods{u"Activate"_s, u"SecondaryActivate"_s, u"ContextMenu"_s};
        for (const auto& method : methods)
            QCOMPARE(host.callItem(method, {1, 2}).type(), QDBusMessage::ReplyMessage);  // without an action
        QList<QPoint> places;
        m_item->setAction([&places](QPoint point) { places.append(point); });
        QCOMPARE(host.callItem(u"Scroll"_s, {120, u"vertical"_s}).type(), QDBusMessage::ReplyMessage);
        for (qsizetype i = 0; i < methods.size(); ++i) {
            QCOMPARE(host.callItem(methods.at(i), {-1920, 12}).type(), QDBusMessage::ReplyMessage);
            QTRY_COMPARE(places, QList<QPoint>(i + 1, QPoint(-1920, 12)));
        }
    }

    void hasAMenuWhereItIsNeeded_data() {
        QTest::addColumn<QByteArray>("watcher");
        QTest::addColumn<bool>("isNeeded");
        QTest::newRow("GNOME") << QByteArray("gnome-shell") << true;
        QTest::newRow("unknown") << QByteArray("somebody") << true;
        QTest::newRow("MATE") << QByteArray("notification-area-applet") << false;
        QTest::newRow("waybar") << QByteArray("waybar") << false;
    }

    void hasAMenuWhereItIsNeeded() {
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
        // An item that is only a menu has it in every tray.
        m_item->setMenu({{.identifier = u"a"_s, .title = u"a"_s}});
        QVERIFY(all().contains(u"Menu"_s));
    }

    void indicatorsGetAnEntryAndAFile() {
        ProcessName name("ayatana-indicator-application-service");
        m_watcher->appear();
        createItem();
        int clicks = 0;
        m_item->setAction([&clicks](QPoint) { ++clicks; });
        m_item->setImage(square(Qt::green));
        QTRY_COMPARE(m_watcher->registrations, 1);
        StatusNotifierHost host(m_service);
        // A slow tray reads everything at once, after a change.
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

    void actionMayDropTheItem() {
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

    void survivesTheEndOfTheBus() {
        EmptyBus daemon;
        const QDBusConnection bus = QDBusConnection::connectToBus(daemon.address(), u"mortal"_s);
        QVERIFY(bus.isConnected());
        DBusStatusItem item(bus, m_service, std::make_shared<StatusNotifierQueue>(), u"Tidemark"_s,
                            u"tidemark"_s);
        daemon.end();
        QTRY_VERIFY(!bus.isConnected());
        item.setDot(Qt::red);
        item.setLabel(u"1 error"_s);
        item.setImage(square(Qt::blue));
        QCoreApplication::processEvents();
    }
};

}  // namespace
}  // namespace tidemark

TIDEMARK_TEST(tidemark::StatusNotifierTest)
#include "StatusNotifierTest.moc"
