#include "desktop/DBusMenu.h"

#include "StatusNotifierHost.h"
#include "desktop/DBusStatusBar.h"
#include "tests/TestProgram.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QProcess>
#include <memory>

namespace tidemark {
namespace {

const QString layoutUpdated = QStringLiteral("LayoutUpdated");
const QString propertiesUpdated = QStringLiteral("ItemsPropertiesUpdated");
const QString about = QStringLiteral("AboutToShow");

MenuItem entry(const QString& identifier, const QString& title, std::function<void()> action = {}) {
    return {.identifier = identifier, .title = title, .action = std::move(action)};
}

MenuItem separatorLine(const QString& identifier) {
    return {.identifier = identifier, .isSeparator = true};
}

class DBusMenuTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void panelsReadAndChoose();
    void signalsOnlyWhatChanged();
    void agingTitlesAreToldWhenTheyAreSeen();
    void openMenuKeepsItsEntries_data();
    void openMenuKeepsItsEntries();
    void chosenEntryMayBeGoneMeanwhile();
    void chosenEntryMayDropTheItem();
    void answersOnlyWhatIsAsked();
    void menuWithoutEntriesIsThere();
    void itemThatIsAMenuRefusesToBeActivated();

private:
    [[nodiscard]] QStringList read();
    void command(const QByteArray& line) { m_client.write(line + '\n'); }
    void startClient();
    [[nodiscard]] int idOf(const QString& label) const;
    void sendEvent(const QString& label, const QString& event) const;

    std::unique_ptr<DBusStatusBar> m_bar;
    std::unique_ptr<StatusItem> m_item;
    QString m_service;
    std::unique_ptr<StatusNotifierHost> m_host;
    QProcess m_client;
};

void DBusMenuTest::init() {
    m_bar = std::make_unique<DBusStatusBar>(QStringLiteral("Tidemark"));
    m_service = QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid());
    auto* bus = QDBusConnection::sessionBus().interface();
    QTRY_VERIFY(!bus->isServiceRegistered(m_service));
    m_item = m_bar->createStatusItem(QStringLiteral("tidemark-p"));
    m_host = std::make_unique<StatusNotifierHost>(m_service);
    QTRY_VERIFY(bus->isServiceRegistered(m_service));
}

void DBusMenuTest::cleanup() {
    m_client.closeWriteChannel();
    m_client.waitForFinished(hangLimit);
    m_host.reset();
    m_item.reset();
    m_bar.reset();
}

void DBusMenuTest::startClient() {
    m_client.start(QStringLiteral(MENU_CLIENT), {m_service});
    QVERIFY(m_client.waitForStarted(hangLimit));
}

QStringList DBusMenuTest::read() {
    command("read");
    QStringList lines;
    while (!lines.endsWith(QStringLiteral("end"))) {
        if (!m_client.canReadLine() &&
            !QTest::qWaitFor([this] { return m_client.canReadLine(); }, hangLimit)) {
            return lines;
        }
        lines << QString::fromUtf8(m_client.readLine()).trimmed();
    }
    lines.removeLast();
    lines.removeAll(QStringLiteral("shown"));
    return lines;
}

int DBusMenuTest::idOf(const QString& label) const {
    const QDBusMessage reply =
        m_host->callMenu(QStringLiteral("GetGroupProperties"),
                         {QVariant::fromValue(QList<int>()), QStringList{QStringLiteral("label")}});
    for (const auto& entry : qdbus_cast<QList<DBusMenuProperties>>(reply.arguments().value(0))) {
        if (entry.properties.value(QStringLiteral("label")) == label) {
            return entry.id;
        }
    }
    return -1;
}

void DBusMenuTest::sendEvent(const QString& label, const QString& event) const {
    const int id = label.isEmpty() ? 0 : idOf(label);
    const QVariant data = QVariant::fromValue(QDBusVariant(0));
    QCOMPARE(m_host->callMenu(QStringLiteral("Event"), {id, event, data, 0U}).type(),
             QDBusMessage::ReplyMessage);
}

void DBusMenuTest::panelsReadAndChoose() {
    int refreshed = 0;
    Menu menu{entry(QStringLiteral("title"), QStringLiteral("api_v2 <b>&amp;")),
              separatorLine(QStringLiteral("s1")),
              entry(QStringLiteral("status"), QStringLiteral("Status: ⏳ Building")),
              entry(QStringLiteral("refresh"), QStringLiteral("Refresh Now"), [&refreshed] { ++refreshed; }),
              entry(QStringLiteral("quit"), QStringLiteral("Quit"), [] {})};
    menu.last().keyEquivalent = u'q';
    m_item->setMenu(menu);
    startClient();
    const auto reads = [this](const QStringList& lines) {
        return QTest::qWaitFor([&] { return read() == lines; }, hangLimit);
    };
    QVERIFY(reads({QStringLiteral("api__v2 <b>&amp;"), QStringLiteral("--"),
                   QStringLiteral("Status: ⏳ Building"), QStringLiteral("* Refresh Now"),
                   QStringLiteral("* Quit [Control+q]")}));

    menu[2].title = QStringLiteral("Status:\t✅ Ready\n") + QString(1000, u'x');
    m_item->setMenu(menu);
    QVERIFY(reads({QStringLiteral("api__v2 <b>&amp;"), QStringLiteral("--"),
                   QStringLiteral("Status: ✅ Ready ") + QString(284, u'x') + QStringLiteral("…"),
                   QStringLiteral("* Refresh Now"), QStringLiteral("* Quit [Control+q]")}));

    command("click Refresh Now");
    QTRY_COMPARE(refreshed, 1);

    menu.remove(2);
    menu.insert(1, entry(QStringLiteral("error"), QStringLiteral("Failed")));
    m_item->setMenu(menu);
    const QStringList failed{QStringLiteral("api__v2 <b>&amp;"), QStringLiteral("Failed"),
                             QStringLiteral("--"), QStringLiteral("* Refresh Now"),
                             QStringLiteral("* Quit [Control+q]")};
    QVERIFY(reads(failed));

    // Other entries while it is open are there when it is opened again.
    command("show");
    QVERIFY(reads(failed));
    menu.remove(1);
    m_item->setMenu(menu);
    QVERIFY(reads(failed));
    command("show");
    QVERIFY(reads({failed.at(0), failed.at(2), failed.at(3), failed.at(4)}));
}

void DBusMenuTest::signalsOnlyWhatChanged() {
    Menu menu{entry(QStringLiteral("a"), QStringLiteral("A")),
              entry(QStringLiteral("b"), QStringLiteral("B"))};
    m_item->setMenu(menu);
    menu.append(entry(QStringLiteral("c"), QStringLiteral("C")));
    m_item->setMenu(menu);
    QCOMPARE(m_host->takeSignals(), QStringList());  // nobody has read anything yet
    const int id = idOf(QStringLiteral("C"));
    m_item->setMenu(menu);
    QCOMPARE(m_host->takeSignals(), QStringList());
    menu[2].action = [] {};
    m_item->setMenu(menu);
    QCOMPARE(m_host->takeSignals(), QStringList{propertiesUpdated});
    menu.remove(0);
    m_item->setMenu(menu);
    QCOMPARE(m_host->takeSignals(), QStringList{layoutUpdated});
    QCOMPARE(idOf(QStringLiteral("C")), id);
    // Another order is another layout; a changed text goes along.
    menu.swapItemsAt(0, 1);
    menu[0].title = QStringLiteral("C!");
    m_item->setMenu(menu);
    QCOMPARE(m_host->takeSignals(), (QStringList{propertiesUpdated, layoutUpdated}));
}

void DBusMenuTest::agingTitlesAreToldWhenTheyAreSeen() {
    int minutes = 1;
    MenuItem age = entry(QStringLiteral("age"), QString());
    age.currentTitle = [&minutes] { return QStringLiteral("%1 minutes").arg(minutes); };
    m_item->setMenu({age});
    QVERIFY(idOf(QStringLiteral("1 minutes")) > 0);
    ++minutes;
    m_item->setMenu({age});
    QCOMPARE(m_host->takeSignals(), QStringList());
    QCOMPARE(m_host->callMenu(about, {0}).arguments(), QVariantList{false});
    QCOMPARE(m_host->takeSignals(), QStringList{propertiesUpdated});
    QCOMPARE(m_host->callMenu(about, {0}).arguments(), QVariantList{false});
    QCOMPARE(m_host->takeSignals(), QStringList());

    sendEvent({}, QStringLiteral("closed"));
    // Other entries come, and panels that keep the texts of those they know are still told of this one.
    ++minutes;
    m_item->setMenu({age, entry(QStringLiteral("new"), QStringLiteral("New"))});
    QCOMPARE(m_host->takeSignals(), QStringList{layoutUpdated});
    QCOMPARE(m_host->callMenu(about, {0}).arguments(), QVariantList{false});
    QCOMPARE(m_host->takeSignals(), QStringList{propertiesUpdated});

    // While the menu is open somebody sees it.
    ++minutes;
    m_item->setMenu({age, entry(QStringLiteral("new"), QStringLiteral("New"))});
    QCOMPARE(m_host->takeSignals(), QStringList{propertiesUpdated});
    QVERIFY(idOf(QStringLiteral("4 minutes")) > 0);
}

void DBusMenuTest::openMenuKeepsItsEntries_data() {
    QTest::addColumn<QString>("end");
    QTest::addColumn<QString>("entry");
    QTest::newRow("closed") << "closed" << QString();
    QTest::newRow("chosen") << "clicked"
                            << "Now";
    QTest::newRow("opened again") << QString() << QString();
}

void DBusMenuTest::openMenuKeepsItsEntries() {
    QFETCH(const QString, end);
    QFETCH(const QString, entry);
    int chosen = 0;
    const MenuItem now =
        tidemark::entry(QStringLiteral("now"), QStringLiteral("Now"), [&chosen] { ++chosen; });
    const MenuItem failed = tidemark::entry(QStringLiteral("error"), QStringLiteral("Failed"));
    MenuItem status = tidemark::entry(QStringLiteral("status"), QStringLiteral("Building"));
    m_item->setMenu({status, now});
    QVERIFY(idOf(QStringLiteral("Now")) > 0);
    QCOMPARE(m_host->callMenu(about, {0}).arguments(), QVariantList{false});
    static_cast<void>(m_host->takeSignals());

    status.title = QStringLiteral("Ready");
    m_item->setMenu({failed, status, now});
    QCOMPARE(m_host->takeSignals(), QStringList{propertiesUpdated});
    QCOMPARE(idOf(QStringLiteral("Failed")), -1);
    if (end.isEmpty()) {
        QCOMPARE(m_host->callMenu(about, {0}).arguments(), QVariantList{true});
    } else {
        sendEvent(entry, end);
    }
    QCOMPARE(m_host->takeSignals(), QStringList{layoutUpdated});
    QVERIFY(idOf(QStringLiteral("Failed")) > 0);
    QTRY_COMPARE(chosen, entry.isEmpty() ? 0 : 1);
}

void DBusMenuTest::chosenEntryMayBeGoneMeanwhile() {
    int chosen = 0;
    const MenuItem rest = entry(QStringLiteral("rest"), QStringLiteral("Rest"));
    m_item->setMenu({rest, entry(QStringLiteral("a"), QStringLiteral("A"), [&chosen] { ++chosen; })});
    const int id = idOf(QStringLiteral("A"));
    QCOMPARE(m_host->callMenu(about, {0}).arguments(), QVariantList{false});
    m_item->setMenu({rest});
    sendEvent({}, QStringLiteral("closed"));
    const QVariant data = QVariant::fromValue(QDBusVariant(0));
    const QVariantList click{id, QStringLiteral("clicked"), data, 0U};
    QCOMPARE(m_host->callMenu(QStringLiteral("Event"), click).type(), QDBusMessage::ReplyMessage);
    QTRY_COMPARE(chosen, 1);
}

void DBusMenuTest::chosenEntryMayDropTheItem() {
    const auto marker = std::make_shared<int>(0);
    m_item->setMenu({entry(QStringLiteral("quit"), QStringLiteral("Quit"), [this, marker] {
        m_item.reset();
        ++*marker;
    })});
    sendEvent(QStringLiteral("Quit"), QStringLiteral("clicked"));
    QTRY_COMPARE(*marker, 1);
}

void DBusMenuTest::answersOnlyWhatIsAsked() {
    m_item->setMenu({entry(QStringLiteral("a"), QStringLiteral("A")), separatorLine(QStringLiteral("s"))});
    const auto layout = [this](int parent, int depth, const QStringList& names) {
        const QDBusMessage reply = m_host->callMenu(QStringLiteral("GetLayout"), {parent, depth, names});
        return qdbus_cast<DBusMenuLayout>(reply.arguments().value(1));
    };
    const int id = idOf(QStringLiteral("A"));
    QCOMPARE(layout(0, 0, {}).children.size(), 0);
    QCOMPARE(layout(0, 1, {}).children.size(), 2);
    QCOMPARE(layout(id, -1, {QStringLiteral("enabled")}).properties,
             (QVariantMap{{QStringLiteral("enabled"), false}}));
    const auto label = m_host->callMenu(QStringLiteral("GetProperty"), {id, QStringLiteral("label")});
    QCOMPARE(label.arguments().value(0).value<QDBusVariant>().variant(), QVariant(QStringLiteral("A")));

    // Errors, and neither crash nor silence, for what is not there.
    const QVariant data = QVariant::fromValue(QDBusVariant(0));
    const QList<std::pair<QString, QVariantList>> wrong{
        {QStringLiteral("GetLayout"), {77, -1, QStringList()}},
        {QStringLiteral("GetProperty"), {77, QStringLiteral("label")}},
        {QStringLiteral("GetProperty"), {id, QStringLiteral("colour")}},
        {QStringLiteral("Event"), {-1, QStringLiteral("clicked"), data, 0U}}};
    for (const auto& [method, arguments] : wrong) {
        QCOMPARE(m_host->callMenu(method, arguments).type(), QDBusMessage::ErrorMessage);
    }
    QCOMPARE(m_host->callMenu(QStringLiteral("AboutToShowGroup"), {QVariant::fromValue(QList<int>{0, 77})})
                 .signature(),
             QStringLiteral("aiai"));
}

void DBusMenuTest::menuWithoutEntriesIsThere() {
    const QDBusMessage layout = m_host->callMenu(QStringLiteral("GetLayout"), {0, -1, QStringList()});
    QCOMPARE(layout.signature(), QStringLiteral("u(ia{sv}av)"));
    const auto root = qdbus_cast<DBusMenuLayout>(layout.arguments().at(1));
    QVERIFY(root.children.isEmpty() && root.properties.isEmpty());
    QCOMPARE(m_host->callMenu(about, {0}).arguments(), QVariantList{false});
}

void DBusMenuTest::itemThatIsAMenuRefusesToBeActivated() {
    QCOMPARE(m_host->property(QStringLiteral("ItemIsMenu")), QVariant(false));
    m_item->setMenu({entry(QStringLiteral("a"), QStringLiteral("A"))});
    QCOMPARE(m_host->property(QStringLiteral("ItemIsMenu")), QVariant(true));
    QCOMPARE(m_host->callItem(QStringLiteral("Activate"), {1, 1}).errorName(),
             QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod"));
    // The panel opens it thereupon: nothing of ours appears, without which this program could not go on.
    QCOMPARE(m_host->callMenu(about, {0}).arguments(), QVariantList{false});
    QTest::qWait(400);
}

}  // namespace
}  // namespace tidemark

TIDEMARK_TEST(tidemark::DBusMenuTest)
#include "DBusMenuTest.moc"
