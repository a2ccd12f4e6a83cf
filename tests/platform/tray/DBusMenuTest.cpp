#include <QDBusMessage>
#include <QProcess>

#include "platform/tray/DBusMenu.h"
#include "tests/TestProgram.h"
#include "tests/platform/tray/StatusNotifierHost.h"
#include "tests/platform/tray/TrayScene.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

const QString layoutUpdated = u"LayoutUpdated"_s;
const QString propertiesUpdated = u"ItemsPropertiesUpdated"_s;
const QString about = u"AboutToShow"_s;

MenuItem entry(const QString& identifier, const QString& title, std::function<void()> action = {}) {
    return {.identifier = identifier, .title = title, .action = std::move(action)};
}

MenuItem separatorLine(const QString& identifier) {
    return {.identifier = identifier, .isSeparator = true};
}

class DBusMenuTest final : public QObject, protected TrayScene {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        setUp();
        createItem();
        m_host = std::make_unique<StatusNotifierHost>(m_service);
    }

    void cleanup() {
        m_client.closeWriteChannel();
        m_client.waitForFinished(hangLimit);
        m_host.reset();
        tearDown();
    }

    void panelsReadIt() {
        Menu menu{entry(u"title"_s, u"api_v2 <b>&amp;"_s), separatorLine(u"s1"_s),
                  entry(u"status"_s, u"Status: ⏳ Building"_s), entry(u"refresh"_s, u"Refresh Now"_s, [] {}),
                  entry(u"quit"_s, u"Quit"_s, [] {})};
        menu.last().keyEquivalent = u'q';
        m_item->setMenu(menu);
        m_client.start(QStringLiteral(MENU_CLIENT), {m_service});
        const auto reads = [this](const QStringList& lines) {
            return QTest::qWaitFor([&] { return read() == lines; }, hangLimit);
        };
        QVERIFY(reads({u"api__v2 <b>&amp;"_s, u"--"_s, u"Status: ⏳ Building"_s, u"* Refresh Now"_s,
                       u"* Quit [Control+q]"_s}));

        menu[2].title = u"Status:\t✅ Ready\n"_s + QString(1000, u'x');
        m_item->setMenu(menu);
        QVERIFY(reads({u"api__v2 <b>&amp;"_s, u"--"_s, u"Status: ✅ Ready "_s + QString(284, u'x') + u"…"_s,
                       u"* Refresh Now"_s, u"* Quit [Control+q]"_s}));

        menu.remove(2);
        menu.insert(1, entry(u"error"_s, u"Failed"_s));
        m_item->setMenu(menu);
        QVERIFY(reads(
            {u"api__v2 <b>&amp;"_s, u"Failed"_s, u"--"_s, u"* Refresh Now"_s, u"* Quit [Control+q]"_s}));
    }

    void signalsOnlyWhatChanged() {
        Menu menu{entry(u"a"_s, u"A"_s), entry(u"b"_s, u"B"_s)};
        m_item->setMenu(menu);
        menu.append(entry(u"c"_s, u"C"_s));
        m_item->setMenu(menu);
        QCOMPARE(m_host->takeSignals(), QStringList());  // no panel has read the menu yet
        const int id = idOf(u"C"_s);
        m_item->setMenu(menu);
        QCOMPARE(m_host->takeSignals(), QStringList());
        menu[2].action = [] {};
        m_item->setMenu(menu);
        QCOMPARE(m_host->takeSignals(), QStringList{propertiesUpdated});
        menu.remove(0);
        m_item->setMenu(menu);
        QCOMPARE(m_host->takeSignals(), QStringList{layoutUpdated});
        QCOMPARE(idOf(u"C"_s), id);
        // Another order is another layout. It is published with a changed text.
        menu.swapItemsAt(0, 1);
        menu[0].title = u"C!"_s;
        m_item->setMenu(menu);
        QCOMPARE(m_host->takeSignals(), (QStringList{propertiesUpdated, layoutUpdated}));
    }

    void agingTitlesAreToldWhenTheyAreSeen() {
        int minutes = 1;
        MenuItem age = entry(u"age"_s, QString());
        age.currentTitle = [&minutes] { return u"%1 minutes"_s.arg(minutes); };
        m_item->setMenu({age});
        QVERIFY(idOf(u"1 minutes"_s) > 0);
        ++minutes;
        m_item->setMenu({age});
        QCOMPARE(m_host->takeSignals(), QStringList());
        QCOMPARE(m_host->callMenu(about, {0}).arguments(), QVariantList{false});
        QCOMPARE(m_host->takeSignals(), QStringList{propertiesUpdated});
        QCOMPARE(m_host->callMenu(about, {0}).arguments(), QVariantList{false});
        QCOMPARE(m_host->takeSignals(), QStringList());

        sendEvent({}, u"closed"_s);
        // Panels may cache the texts of entries that they know, so this one is reported even when other
        // entries come.
        ++minutes;
        m_item->setMenu({age, entry(u"new"_s, u"New"_s)});
        QCOMPARE(m_host->takeSignals(), QStringList{layoutUpdated});
        QCOMPARE(m_host->callMenu(about, {0}).arguments(), QVariantList{false});
        QCOMPARE(m_host->takeSignals(), QStringList{propertiesUpdated});

        // While the menu is open, the change is visible.
        ++minutes;
        m_item->setMenu({age, entry(u"new"_s, u"New"_s)});
        QCOMPARE(m_host->takeSignals(), QStringList{propertiesUpdated});
        QVERIFY(idOf(u"4 minutes"_s) > 0);
    }

    void openMenuKeepsItsEntries_data() {
        QTest::addColumn<QString>("end");
        QTest::addColumn<QString>("entry");
        QTest::newRow("closed") << "closed" << QString();
        QTest::newRow("chosen") << "clicked"
                                << "Now";
        QTest::newRow("opened again") << QString() << QString();
    }

    void openMenuKeepsItsEntries() {
        QFETCH(const QString, end);
        QFETCH(const QString, entry);
        int chosen = 0;
        const MenuItem now = tidemark::entry(u"now"_s, u"Now"_s, [&chosen] { ++chosen; });
        const MenuItem failed = tidemark::entry(u"error"_s, u"Failed"_s);
        MenuItem status = tidemark::entry(u"status"_s, u"Building"_s);
        m_item->setMenu({status, now});
        QVERIFY(idOf(u"Now"_s) > 0);
        QCOMPARE(m_host->callMenu(about, {0}).arguments(), QVariantList{false});
        static_cast<void>(m_host->takeSignals());

        status.title = u"Ready"_s;
        m_item->setMenu({failed, status, now});
        QCOMPARE(m_host->takeSignals(), QStringList{propertiesUpdated});
        QCOMPARE(idOf(u"Failed"_s), -1);
        if (end.isEmpty())
            QCOMPARE(m_host->callMenu(about, {0}).arguments(), QVariantList{true});
        else
            sendEvent(entry, end);
        QCOMPARE(m_host->takeSignals(), QStringList{layoutUpdated});
        QVERIFY(idOf(u"Failed"_s) > 0);
        QTRY_COMPARE(chosen, entry.isEmpty() ? 0 : 1);
    }

    void chosenEntryMayBeGoneMeanwhile() {
        int chosen = 0;
        const MenuItem rest = entry(u"rest"_s, u"Rest"_s);
        m_item->setMenu({rest, entry(u"a"_s, u"A"_s, [&chosen] { ++chosen; })});
        const int id = idOf(u"A"_s);
        QCOMPARE(m_host->callMenu(about, {0}).arguments(), QVariantList{false});
        m_item->setMenu({rest});
        sendEvent({}, u"closed"_s);
        const QVariant data = QVariant::fromValue(QDBusVariant(0));
        const QVariantList click{id, u"clicked"_s, data, 0U};
        QCOMPARE(m_host->callMenu(u"Event"_s, click).type(), QDBusMessage::ReplyMessage);
        QTRY_COMPARE(chosen, 1);
    }

    void chosenEntryMayDropTheItem() {
        const auto marker = std::make_shared<int>(0);
        m_item->setMenu({entry(u"quit"_s, u"Quit"_s, [this, marker] {
            m_item.reset();
            ++*marker;
        })});
        sendEvent(u"Quit"_s, u"clicked"_s);
        QTRY_COMPARE(*marker, 1);
    }

    void answersOnlyWhatIsAsked() {
        m_item->setMenu({entry(u"a"_s, u"A"_s), separatorLine(u"s"_s)});
        const auto layout = [this](int parent, int depth, const QStringList& names) {
            const QDBusMessage reply = m_host->callMenu(u"GetLayout"_s, {parent, depth, names});
            return qdbus_cast<DBusMenuLayout>(reply.arguments().value(1));
        };
        const int id = idOf(u"A"_s);
        QCOMPARE(layout(0, 0, {}).children.size(), 0);
        QCOMPARE(layout(0, 1, {}).children.size(), 2);
        QCOMPARE(layout(id, -1, {u"enabled"_s}).properties, (QVariantMap{{u"enabled"_s, false}}));
        const auto label = m_host->callMenu(u"GetProperty"_s, {id, u"label"_s});
        QCOMPARE(label.arguments().value(0).value<QDBusVariant>().variant(), QVariant(u"A"_s));

        // Calls for unknown entries are answered with errors.
        const QVariant data = QVariant::fromValue(QDBusVariant(0));
        const QList<std::pair<QString, QVariantList>> wrong{{u"GetLayout"_s, {77, -1, QStringList()}},
                                                            {u"GetProperty"_s, {77, u"label"_s}},
                                                            {u"GetProperty"_s, {id, u"colour"_s}},
                                                            {u"Event"_s, {-1, u"clicked"_s, data, 0U}}};
        for (const auto& [method, arguments] : wrong)
            QCOMPARE(m_host->callMenu(method, arguments).type(), QDBusMessage::ErrorMessage);
        QCOMPARE(
            m_host->callMenu(u"AboutToShowGroup"_s, {QVariant::fromValue(QList<int>{0, 77})}).signature(),
            u"aiai"_s);
    }

    void menuWithoutEntriesIsThere() {
        const QDBusMessage layout = m_host->callMenu(u"GetLayout"_s, {0, -1, QStringList()});
        QCOMPARE(layout.signature(), u"u(ia{sv}av)"_s);
        const auto root = qdbus_cast<DBusMenuLayout>(layout.arguments().at(1));
        QVERIFY(root.children.isEmpty() && root.properties.isEmpty());
        QCOMPARE(m_host->callMenu(about, {0}).arguments(), QVariantList{false});
    }

    void itemThatIsAMenuRefusesToBeActivated() {
        QCOMPARE(m_host->property(u"ItemIsMenu"_s), QVariant(false));
        m_item->setMenu({entry(u"a"_s, u"A"_s)});
        QCOMPARE(m_host->property(u"ItemIsMenu"_s), QVariant(true));
        QCOMPARE(m_host->callItem(u"Activate"_s, {1, 1}).errorName(),
                 u"org.freedesktop.DBus.Error.UnknownMethod"_s);
        // The panel opens the menu itself. A window of ours would crash this program, which has no screen.
        QCOMPARE(m_host->callMenu(about, {0}).arguments(), QVariantList{false});
        QTest::qWait(400);
    }

private:
    [[nodiscard]] QStringList read() {
        m_client.write("\n");
        QStringList lines;
        while (!lines.endsWith(u"end"_s)) {
            if (!m_client.canReadLine() &&
                !QTest::qWaitFor([this] { return m_client.canReadLine(); }, hangLimit))
                return lines;
            lines << QString::fromUtf8(m_client.readLine()).trimmed();
        }
        lines.removeLast();
        return lines;
    }

    [[nodiscard]] int idOf(const QString& label) const {
        const QDBusMessage reply = m_host->callMenu(
            u"GetGroupProperties"_s, {QVariant::fromValue(QList<int>()), QStringList{u"label"_s}});
        for (const auto& entry : qdbus_cast<QList<DBusMenuProperties>>(reply.arguments().value(0)))
            if (entry.properties.value(u"label"_s) == label)
                return entry.id;
        return -1;
    }

    void sendEvent(const QString& label, const QString& event) const {
        const int id = label.isEmpty() ? 0 : idOf(label);
        const QVariant data = QVariant::fromValue(QDBusVariant(0));
        QCOMPARE(m_host->callMenu(u"Event"_s, {id, event, data, 0U}).type(), QDBusMessage::ReplyMessage);
    }

    std::unique_ptr<StatusNotifierHost> m_host;
    QProcess m_client;
};

}  // namespace
}  // namespace tidemark

TIDEMARK_TEST(tidemark::DBusMenuTest)
#include "DBusMenuTest.moc"
