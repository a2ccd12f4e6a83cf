#include "desktop/DesktopWorkspace.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

/// What is handed to the desktop's opener, which here only notes it, its token in front, and goes on running.
class WorkspaceTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void opensWebPages_data();
    void opensWebPages();
    void opensFiles();
    void tokenIsGoodForOneActivation();

private:
    [[nodiscard]] QString path(const QString& name) const { return m_folder.filePath(name); }
    void write(const QString& name, const QByteArray& content, QFile::Permissions more = {}) const;
    [[nodiscard]] QStringList opened() const;
    /// Opens a last one, so that nothing is still to come; gives the ones before.
    [[nodiscard]] QStringList settle();

    QTemporaryDir m_folder;
    DesktopWorkspace m_workspace;
};

void WorkspaceTest::write(const QString& name, const QByteArray& content, QFile::Permissions more) const {
    QFile file(path(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.setPermissions(file.permissions() | more);
}

QStringList WorkspaceTest::opened() const {
    QFile log(path(u"log"_s));
    if (!log.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(log.readAll()).split(u'\n', Qt::SkipEmptyParts);
}

QStringList WorkspaceTest::settle() {
    const QString last = u"|https://example.com/last"_s;
    m_workspace.openURL(QUrl(last.mid(1)));
    [&] { QTRY_VERIFY(opened().contains(last)); }();
    QStringList result = opened();
    result.removeOne(last);
    return result;
}

void WorkspaceTest::initTestCase() {
    const QByteArray log = path(u"log"_s).toUtf8();
    write(u"xdg-open"_s,
          "#!/bin/sh\nprintf '%s|%s\\n' \"$XDG_ACTIVATION_TOKEN\" \"$1\" >>'" + log + "'\nexec sleep 2\n",
          QFile::ExeOwner);
    qputenv("PATH", m_folder.path().toUtf8() + ':' + qgetenv("PATH"));
}

void WorkspaceTest::init() {
    QFile::remove(path(u"log"_s));
}

void WorkspaceTest::opensWebPages_data() {
    QTest::addColumn<QUrl>("url");
    QTest::addColumn<QStringList>("expected");
    const QString page = u"https://vercel.com/a?b=c%20d&e=%22$HOME#f"_s;
    QTest::newRow("https") << QUrl(page) << QStringList{u'|' + page};
    QTest::newRow("http") << QUrl(u"http://a.example"_s) << QStringList{u"|http://a.example"_s};
    QTest::newRow("unencoded") << QUrl(u"https://a.example/é x"_s)
                               << QStringList{u"|https://a.example/%C3%A9%20x"_s};
    for (const char* url : {"", "file:///etc/passwd", "javascript:alert(1)", "mailto:a@b.example", "a.html",
                            "https:///etc/passwd", "//a.example/", "ftp://a.example/"})
        QTest::newRow(*url == '\0' ? "empty" : url) << QUrl(QLatin1StringView(url)) << QStringList();
}

void WorkspaceTest::opensWebPages() {
    QFETCH(QUrl, url);
    QElapsedTimer timer;
    timer.start();
    m_workspace.openURL(url);
    QVERIFY2(timer.elapsed() < 1000, "waits for the opener");
    QTEST(settle(), "expected");
}

void WorkspaceTest::opensFiles() {
    write(u"release notes #1.txt"_s, "x");
    m_workspace.openFile(path(u"release notes #1.txt"_s));
    m_workspace.openFile(path(u"missing.txt"_s));
    m_workspace.openFile(m_folder.path());
    m_workspace.openFile(u"https://a.example/"_s);
    m_workspace.openFile(QString());
    const QString url = QUrl::fromLocalFile(path(u"release notes #1.txt"_s)).toString(QUrl::FullyEncoded);
    QCOMPARE(settle(), QStringList{u'|' + url});
}

void WorkspaceTest::tokenIsGoodForOneActivation() {
    qputenv("XDG_ACTIVATION_TOKEN", "tok-1");
    m_workspace.openURL(QUrl(u"file:///etc/passwd"_s));
    m_workspace.openURL(QUrl(u"https://a.example/"_s));
    QCOMPARE(settle(), QStringList{u"tok-1|https://a.example/"_s});
}

}  // namespace
}  // namespace tidemark

QTEST_MAIN(tidemark::WorkspaceTest)
#include "WorkspaceTest.moc"
