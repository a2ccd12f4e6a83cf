#include <QTemporaryDir>
#include <algorithm>

#include "platform/base/CoreDumps.h"
#include "platform/session/DesktopWorkspace.h"
#include "tests/TestProgram.h"
#include "tests/fakes/Files.h"

namespace tidemark {
namespace {

using namespace Qt::StringLiterals;

/// Replaces the desktop's opener by a script that records its activation token and argument. It then keeps
/// running as long as its file exists, so a caller that waits for it hangs. Its limit of core files is
/// recorded too.
class WorkspaceTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        writeFile(path(u"xdg-open"_s),
                  "#!/bin/sh\nulimit -Sc >\"$0.limit\"\nprintf '%s|%s\\n' \"$XDG_ACTIVATION_TOKEN\" \"$1\" "
                  ">>\"$0.log\"\nwhile [ -e \"$0\" ]; do sleep 0.05; done >/dev/null 2>&1\n");
        QFile::setPermissions(path(u"xdg-open"_s), QFile::ReadOwner | QFile::ExeOwner);
        rlimit limit{};
        QCOMPARE(::getrlimit(RLIMIT_CORE, &limit), 0);
        limit.rlim_cur = std::min<rlim_t>(4096, limit.rlim_max);
        QCOMPARE(::setrlimit(RLIMIT_CORE, &limit), 0);
        coredumps::forbid();
        qputenv("PATH", m_folder.path().toUtf8() + ':' + qgetenv("PATH"));
    }

    void opensWebPagesAndFiles() {
        writeFile(path(u"release notes #1.txt"_s), "x");
        for (const char* refused : {"", "file:///etc/passwd", "javascript:alert(1)", "mailto:a@b.example",
                                    "a.html", "https:///etc/passwd", "//a.example/", "ftp://a.example/"})
            m_workspace.openURL(QUrl(QLatin1StringView(refused)));
        for (const auto& refused : {path(u"missing.txt"_s), m_folder.path(), u"https://a.example/"_s, u""_s})
            m_workspace.openFile(refused);

        // The token is good for one activation.
        qputenv("XDG_ACTIVATION_TOKEN", "token");
        for (const auto& url : {u"https://vercel.com/a?b=c%20d&e=%22$HOME#f"_s, u"http://a.example"_s,
                                u"https://a.example/é x"_s})
            m_workspace.openURL(QUrl(url));
        m_workspace.openFile(path(u"release notes #1.txt"_s));
        QStringList expected{u"token|https://vercel.com/a?b=c%20d&e=%22$HOME#f"_s, u"|http://a.example"_s,
                             u"|https://a.example/%C3%A9%20x"_s,
                             u"|file://"_s + path(u"release%20notes%20%231.txt"_s)};
        expected.sort();
        QTRY_VERIFY(opened().size() >= expected.size());
        QCOMPARE(opened(), expected);
    }

    void onlyStartedProgramsLeaveCoreFiles() {
        rlimit limit{};
        QCOMPARE(::getrlimit(RLIMIT_CORE, &limit), 0);
        QCOMPARE(limit.rlim_cur, std::min<rlim_t>(1, limit.rlim_max));
        QFile inherited(path(u"xdg-open.limit"_s));
        QVERIFY(inherited.open(QIODevice::ReadOnly));
        QCOMPARE(inherited.readAll().toULongLong(), std::min<rlim_t>(8, limit.rlim_max / 512));
    }

private:
    [[nodiscard]] QString path(const QString& name) const { return m_folder.filePath(name); }

    [[nodiscard]] QStringList opened() const {
        QStringList lines =
            QString::fromUtf8(contentsOf(path(u"xdg-open.log"_s))).split(u'\n', Qt::SkipEmptyParts);
        lines.sort();
        return lines;
    }

    QTemporaryDir m_folder;
    DesktopWorkspace m_workspace;
};

}  // namespace
}  // namespace tidemark

TIDEMARK_GUI_TEST(tidemark::WorkspaceTest)
#include "WorkspaceTest.moc"
