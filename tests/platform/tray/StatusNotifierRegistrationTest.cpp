#include <QDBusConnection>
#include <QDBusConnectionInterface>

#include "platform/tray/StatusNotifierRegistration.h"
#include "tests/TestProgram.h"
#include "tests/platform/tray/TrayScene.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

/// How items come to panels, and leave them.
class StatusNotifierRegistrationTest final : public QObject, protected TrayScene {
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }
    void registersWithEveryWatcher_data() {
        QTest::addColumn<QString>("steps");
        QTest::newRow("watcher first") << "wi";
        QTest::newRow("watcher last") << "iw";
        QTest::newRow("watcher comes back") << "wi-w";
        QTest::newRow("another watcher takes over") << "wir";
        QTest::newRow("long without a watcher") << "iw-w-w";
    }

    void registersWithEveryWatcher() {
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

    void itemsKeepTheirOrder() {
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

    void asksAgainAWatcherThatDidNotTakeIt_data() {
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

    void asksAgainAWatcherThatDidNotTakeIt() {
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
            // Longer than the longest delay between attempts.
            QTest::qWait(150);
            QCOMPARE(m_watcher->registrations, registrations);
            QCOMPARE(m_watcher->listReads, listReads);
        }
        QDBusConnection::disconnectFromBus(u"item"_s);
    }

    void aPanelIsKnownByWhatItReads() {
        // A watcher that reads no icon is no panel.
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

    void droppedItemLeavesTheBus() {
        m_watcher->appear();
        createItem();
        const auto other = m_bar->createStatusItem(u"tidemark-prj_1"_s);
        QTRY_COMPARE(m_watcher->registrations, 2);
        const auto* bus = QDBusConnection::sessionBus().interface();
        const qsizetype names = bus->registeredServiceNames().value().size();
        m_item.reset();
        QTRY_VERIFY(!desktopsession::isOnTheBus(m_service));
        // Its connection is closed as well, so its unique name is gone, too.
        QTRY_COMPARE(bus->registeredServiceNames().value().size(), names - 2);
    }
};

}  // namespace
}  // namespace tidemark

TIDEMARK_TEST(tidemark::StatusNotifierRegistrationTest)
#include "StatusNotifierRegistrationTest.moc"
