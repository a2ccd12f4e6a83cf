#include "desktop/LoginItem.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace tidemark {

using Status = LoginItem::Status;

class LoginItemTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void registersAndUnregisters();
    void programIsQuoted_data();
    void programIsQuoted();
    void entriesOfOthers_data();
    void entriesOfOthers();
    void registeringRepairsAnEntry();
    void unwritableFolderIsReported();

private:
    [[nodiscard]] AutostartLoginItem item(const QString& program) const {
        return {m_folder->filePath(QStringLiteral("config/autostart")),
                QStringLiteral("com.tidemark.Tidemark"), QStringLiteral("Tidemark"), program};
    }
    void write(const QByteArray& entry) const {
        QDir().mkpath(QFileInfo(m_entry).path());
        QFile file(m_entry);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(entry);
    }
    [[nodiscard]] QByteArray read() const {
        QFile file(m_entry);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_entry;
};

void LoginItemTest::init() {
    m_folder = std::make_unique<QTemporaryDir>();
    m_entry = m_folder->filePath(QStringLiteral("config/autostart/com.tidemark.Tidemark.desktop"));
}

void LoginItemTest::registersAndUnregisters() {
    auto login = item(QStringLiteral("/bin/sh"));
    QCOMPARE(login.status(), Status::notRegistered);
    QVERIFY(login.unregisterItem());
    QVERIFY(login.registerItem());
    QCOMPARE(login.status(), Status::enabled);
    QVERIFY(login.unregisterItem());
    QCOMPARE(login.status(), Status::notRegistered);
    QVERIFY(!QFile::exists(m_entry));
}

void LoginItemTest::programIsQuoted_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("exec");
    QTest::newRow("plain") << QStringLiteral("tidemark") << QByteArray("tidemark");
    QTest::newRow("blank") << QStringLiteral("tide mark") << QByteArray("tide mark");
    QTest::newRow("percent") << QStringLiteral("100%f") << QByteArray("100%%f");
    QTest::newRow("shell") << QStringLiteral("a\"b`c$d") << QByteArray(R"(a\\"b\\`c\\$d)");
    QTest::newRow("backslash") << QStringLiteral("a\\b") << QByteArray(R"(a\\\\b)");
    QTest::newRow("other reserved") << QStringLiteral("~#'<>&|;()*?=ü") << QByteArray("~#'<>&|;()*?=ü");
}

void LoginItemTest::programIsQuoted() {
    QFETCH(QString, name);
    QFETCH(QByteArray, exec);
    const QString program = m_folder->filePath(name);
    QVERIFY(QFile::link(QStringLiteral("/bin/sh"), program));
    auto login = item(program);
    QVERIFY(login.registerItem());
    const QByteArray expected = "\nExec=\"" + m_folder->path().toUtf8() + '/' + exec + "\"\n";
    QVERIFY2(read().contains(expected), read().constData());
    QCOMPARE(login.status(), Status::enabled);
    QVERIFY(QFile::remove(program));
    QCOMPARE(login.status(), Status::notFound);
}

void LoginItemTest::entriesOfOthers_data() {
    QTest::addColumn<QByteArray>("entry");
    QTest::addColumn<Status>("status");
    const auto row = [](const char* name, const QByteArray& lines, Status status) {
        QTest::newRow(name) << QByteArray("[Desktop Entry]\nType=Application\n" + lines) << status;
    };
    row("on the search path", "Exec=sh -c true\n", Status::enabled);
    row("spaces and comments", "# Hidden=true\nHidden = false\n  Exec = /bin/sh\n", Status::enabled);
    row("hidden", "Exec=/bin/sh\nHidden=true\n", Status::requiresApproval);
    row("disabled", "Exec=/bin/sh\nX-GNOME-Autostart-enabled=false\n", Status::requiresApproval);
    row("hidden in another group", "Exec=/bin/sh\n[Desktop Action x]\nHidden=true\n", Status::enabled);
    row("nothing to try", "Exec=/bin/sh\nTryExec=/nowhere/tidemark\n", Status::notFound);
    row("no program", "Exec=\n", Status::notFound);
    row("program not executable", "Exec=/etc/passwd\n", Status::notFound);
    QTest::newRow("empty file") << QByteArray() << Status::notFound;
}

void LoginItemTest::entriesOfOthers() {
    QFETCH(QByteArray, entry);
    QFETCH(Status, status);
    write(entry);
    QCOMPARE(item(QStringLiteral("/bin/sh")).status(), status);
}

void LoginItemTest::registeringRepairsAnEntry() {
    write("[Desktop Entry]\nExec=/nowhere/tidemark\nHidden=true\n");
    auto login = item(QStringLiteral("/bin/sh"));
    QVERIFY(login.registerItem());
    QCOMPARE(login.status(), Status::enabled);
}

void LoginItemTest::unwritableFolderIsReported() {
    QFile obstacle(m_folder->filePath(QStringLiteral("config")));
    QVERIFY(obstacle.open(QIODevice::WriteOnly));
    auto login = item(QStringLiteral("/bin/sh"));
    QVERIFY(!login.registerItem());
    QCOMPARE(login.status(), Status::notRegistered);
}

}  // namespace tidemark

QTEST_GUILESS_MAIN(tidemark::LoginItemTest)
#include "LoginItemTest.moc"
