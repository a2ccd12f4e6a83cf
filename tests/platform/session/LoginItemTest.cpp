#include <QTemporaryDir>

#include "platform/session/LoginItem.h"
#include "tests/TestProgram.h"
#include "tests/fakes/Files.h"

using namespace tidemark;
using namespace Qt::StringLiterals;
using Status = LoginItem::Status;

class LoginItemTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_entry = m_folder->filePath(u"config/autostart/com.tidemark.Tidemark.desktop"_s);
    }

    void registersAndUnregisters() {
        auto login = item();
        QCOMPARE(login.status(), Status::notRegistered);
        QVERIFY(login.unregisterItem());
        QVERIFY(login.registerItem());
        QCOMPARE(login.status(), Status::enabled);
        QVERIFY(login.unregisterItem());
        QCOMPARE(login.status(), Status::notRegistered);
        QVERIFY(!QFile::exists(m_entry));
    }

    void brokenEntriesAreRepaired() {
        auto login = item();
        const QByteArray edited = "[Desktop Entry]\n# Later\nX-GNOME-Autostart-Delay=9\n";
        for (const QByteArray& broken :
             {edited + "Exec=/nowhere/tidemark\nHidden=true\n", edited + "TryExec=/nowhere/tidemark\n",
              QByteArray("Not a key file\n")}) {
            writeFile(m_entry, broken);
            QVERIFY(login.registerItem());
            QCOMPARE(login.status(), Status::enabled);
            // The user's own lines stay.
            QCOMPARE(contentsOf(m_entry).startsWith(edited), broken.startsWith(edited));
        }
    }

    void programIsQuoted() {
        // No raw strings: a backslash before a quotation mark in one hides the next function from moc.
        const QList<std::pair<QString, QByteArray>> rows{{u"tide mark"_s, "tide mark"},
                                                         {u"100%f"_s, "100%%f"},
                                                         {u"a\"b`c$d"_s, "a\\\\\"b\\\\`c\\\\$d"},
                                                         {u"a\\b"_s, "a\\\\\\\\b"},
                                                         {u"~#'<>&|;()*?=ü"_s, "~#'<>&|;()*?=ü"}};
        for (const auto& [name, exec] : rows) {
            const QString program = m_folder->filePath(name);
            QVERIFY(QFile::link(u"/bin/sh"_s, program));
            auto login = item(program);
            QVERIFY(login.registerItem());
            const QByteArray entry = contentsOf(m_entry);
            QVERIFY2(entry.contains("\nExec=\"" + m_folder->path().toUtf8() + '/' + exec + "\"\n"), entry);
            QCOMPARE(login.status(), Status::enabled);
            QVERIFY(QFile::remove(program));
            QCOMPARE(login.status(), Status::notFound);
        }
    }

    void entriesOfOthers() {
        const auto status = [this](const QByteArray& lines) {
            writeFile(m_entry, "[Desktop Entry]\nType=Application\n" + lines);
            return item().status();
        };
        QCOMPARE(status("Exec=sh -c true\n"), Status::enabled);
        QCOMPARE(status("# Hidden=true\nHidden = false\n  Exec = /bin/sh\n"), Status::enabled);
        QCOMPARE(status("Exec=/bin/sh\nHidden=true\n"), Status::requiresApproval);
        QCOMPARE(status("Exec=/bin/sh\nX-GNOME-Autostart-enabled=false\n"), Status::requiresApproval);
        QCOMPARE(status("Exec=/bin/sh\n[Desktop Action x]\nHidden=true\n"), Status::enabled);
        QCOMPARE(status("Exec=/bin/sh\nTryExec=/nowhere/tidemark\n"), Status::notFound);
        QCOMPARE(status("Exec=\n"), Status::notFound);
        QCOMPARE(status("Exec=/etc/passwd\n"), Status::notFound);  // not executable
        writeFile(m_entry, "");
        QCOMPARE(item().status(), Status::notFound);
    }

    void unwritableFolderIsReported() {
        writeFile(m_folder->filePath(u"config"_s), {});
        auto login = item();
        QVERIFY(!login.registerItem());
        QCOMPARE(login.status(), Status::notRegistered);
    }

private:
    [[nodiscard]] AutostartLoginItem item(const QString& program = u"/bin/sh"_s) const {
        return {QFileInfo(m_entry).path(), u"com.tidemark.Tidemark"_s, u"Tidemark"_s, program};
    }
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_entry;
};

TIDEMARK_TEST(LoginItemTest)
#include "LoginItemTest.moc"
