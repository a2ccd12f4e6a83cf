#include <QSysInfo>

#include "tests/TestProgram.h"
#include "updates/AppVersion.h"
#include "updates/Appcast.h"
#include "updates/PlainText.h"

using namespace tidemark;
using namespace Qt::StringLiterals;

namespace {

const QUrl feedUrl(u"https://updates.example/stable/appcast.xml"_s);

QByteArray feed(const QByteArray& items, const QByteArray& prolog = {}) {
    return "<?xml version='1.0' encoding='utf-8'?>" + prolog +
           "<rss version='2.0' xmlns:sparkle='http://www.andymatuschak.org/xml-namespaces/sparkle'>"
           "<channel><title>Tidemark</title>" +
           items + "</channel></rss>";
}

QByteArray item(const QByteArray& members) {
    return "<item><title>A release</title><sparkle:version>2.0</sparkle:version>" + members + "</item>";
}

/// Each release as "version/displayed/minimum: kind url length signature; …".
QStringList summary(const std::optional<QList<AppcastItem>>& items) {
    if (!items)
        return {u"malformed"_s};
    QStringList result;
    for (const AppcastItem& item : *items) {
        QString line = item.version + u'/' + item.displayVersion + u'/' + item.minimumSystemVersion + u':';
        for (const AppcastEnclosure& enclosure : item.enclosures) {
            const QString kind = enclosure.kind == ArchiveKind::appImage  ? u"appImage"_s
                                 : enclosure.kind == ArchiveKind::package ? u"package"_s
                                                                          : u"other"_s;
            line += u" %1 %2 %3 %4;"_s.arg(kind, enclosure.url.toString())
                        .arg(enclosure.length)
                        .arg(QString::fromLatin1(enclosure.signature));
        }
        result.append(line);
    }
    return result;
}

}  // namespace

class AppcastTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    /// Compares each version of the list with each other one.
    void versionsAreOrdered() {
        const QList<QStringList> ascending{
            {u""_s, u"rubbish"_s, u"-1"_s, u".5"_s, u"v"_s},
            {u"0"_s, u"0.0"_s},
            {u"0.9"_s},
            {u"1.0-alpha"_s, u"1.0a"_s + u"lpha"_s, u"1-ALPHA"_s},
            {u"1.0-beta"_s},
            {u"1.0-beta.2"_s, u"v1.0beta2"_s, u"1.0.0~beta02"_s},
            {u"1.0-beta.10"_s},
            {u"1.0-rc1"_s, u"1.0.rc1"_s, u" 1.0 RC 1 "_s},
            {u"1.0"_s, u"1"_s, u"1.0.0"_s, u"V1.00"_s, u"1.0+build.7"_s, u"1.0."_s},
            {u"1.0.1"_s},
            {u"1.9"_s},
            {u"1.10"_s, u"1.010.0"_s},
            {u"1.10.0.1"_s},
            {u"18446744073709551616"_s},
            {u"18446744073709551617-rc"_s},
        };
        for (qsizetype i = 0; i < ascending.size(); ++i) {
            for (qsizetype j = 0; j < ascending.size(); ++j) {
                for (const QString& left : ascending.at(i)) {
                    for (const QString& right : ascending.at(j)) {
                        const auto order = AppVersion(left) <=> AppVersion(right);
                        QVERIFY2(order == (i <=> j), qPrintable(left + u" and "_s + right));
                    }
                }
            }
        }
    }

    void preReleasesAreKnown() {
        for (const auto* text : {"1.0-beta", "1.0rc1", "2~1", "1.0.dev3"})
            QVERIFY2(AppVersion(QString::fromLatin1(text)).isPreRelease(), text);
        for (const auto* text : {"1.0", "v2", "1.0+5.beta", "nightly", ""})
            QVERIFY2(!AppVersion(QString::fromLatin1(text)).isPreRelease(), text);
    }

    void itemsAreRead_data() {
        QTest::addColumn<QByteArray>("items");
        QTest::addColumn<QStringList>("expected");
        const QByteArray archive = "<enclosure url='/T.AppImage' length='7' sparkle:edSignature='c2ln'";
        const QString read = u" appImage https://updates.example/T.AppImage 7 c2ln;"_s;
        const QByteArray processor = QSysInfo::currentCpuArchitecture().toLatin1();

        QTest::newRow("none") << QByteArray() << QStringList();
        QTest::newRow("elements")
            << item(archive +
                    "/><sparkle:shortVersionString> 2.0\n(a) </sparkle:shortVersionString>"
                    "<sparkle:minimumSystemVersion>2.36</sparkle:minimumSystemVersion>")
            << QStringList{u"2.0/2.0 (a)/2.36:"_s + read};
        QTest::newRow("attributes of the archive")
            << "<item>" + archive + " sparkle:version='3' sparkle:shortVersionString='3.0'/></item>"
            << QStringList{u"3/3.0/:"_s + read};
        QTest::newRow("only a version to read")
            << QByteArray("<item><sparkle:shortVersionString>3.0</sparkle:shortVersionString></item>")
            << QStringList{u"3.0/3.0/:"_s};
        QTest::newRow("no version") << "<item>" + archive + "/></item>" << QStringList();
        QTest::newRow("several archives")
            << item(
                   "<enclosure url='https://cdn.example/t.DEB?a=1&amp;b=2' length=' 12 '/>"
                   "<enclosure url='t?3' type='application/vnd.appimage'/><enclosure url='t.zip' "
                   "length='-1'/>")
            << QStringList{
                   u"2.0/2.0/: package https://cdn.example/t.DEB?a=1&b=2 12 ;"
                   " appImage https://updates.example/stable/t?3 0 ;"
                   " other https://updates.example/stable/t.zip 0 ;"_s};
        QTest::newRow("other systems")
            << item(archive + " sparkle:os='macos'/>" + archive + " sparkle:os='windows-x64'/>" + archive +
                    " sparkle:os='linux-vax'/><enclosure length='1'/>")
            << QStringList{u"2.0/2.0/:"_s};
        QTest::newRow("this system") << item(archive + " sparkle:os='Linux'/>" + archive +
                                             " sparkle:os='linux-" + processor + "'/>")
                                     << QStringList{u"2.0/2.0/:"_s + read + read};
        QTest::newRow("channels") << item(archive + "/><sparkle:channel>nightly</sparkle:channel>") +
                                         item(archive + "/><sparkle:channel/>")
                                  << QStringList{u"2.0/2.0/:"_s + read};
        QTest::newRow("differences are no archives")
            << item("<sparkle:deltas>" + archive + " sparkle:version='9'/></sparkle:deltas>")
            << QStringList{u"2.0/2.0/:"_s};
        QTest::newRow("other names")
            << QByteArray(
                   "<item xmlns:s='http://www.andymatuschak.org/xml-namespaces/sparkle' xmlns:o='urn:o'>"
                   "<version>1</version><o:version>2</o:version><s:version>4</s:version>"
                   "<o:enclosure url='/T.AppImage'/></item><o:item xmlns:o='urn:o'></o:item>")
            << QStringList{u"4/4/:"_s};
    }

    void itemsAreRead() {
        QFETCH(const QByteArray, items);
        QFETCH(const QStringList, expected);
        QCOMPARE(summary(parseAppcast(feed(items), feedUrl)), expected);
    }

    void whatIsNoAppcastIsRefused_data() {
        QTest::addColumn<QByteArray>("document");
        const QByteArray good = feed(item(""));
        const QByteArray bomb =
            "<!DOCTYPE rss [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;'>"
            "<!ENTITY c '&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;'>]>";
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("text") << QByteArray("Not found");
        QTest::newRow("page") << QByteArray("<html><body><channel/></body></html>");
        QTest::newRow("no channel") << QByteArray("<rss version='2.0'/>");
        QTest::newRow("cut") << good.chopped(8);
        QTest::newRow("rubbish behind") << good + "x";
        QTest::newRow("rubbish at the end") << feed(item("") + "<item>&oops;</item>");
        QTest::newRow("document type") << feed(item(""), "<!DOCTYPE rss>");
        QTest::newRow("bomb") << feed(item("<description>&c;&c;</description>"), bomb);
        QTest::newRow("file") << feed(item("<description>&f;</description>"),
                                      "<!DOCTYPE rss [<!ENTITY f SYSTEM 'file:///etc/passwd'>]>");
        QTest::newRow("deep") << feed(QByteArray("<a>").repeated(100'000));
        QTest::newRow("deep text") << feed(item("<description>" + QByteArray("<b>").repeated(100'000)));
        QTest::newRow("many items") << feed(QByteArray("<item/>").repeated(100'000));
    }

    void whatIsNoAppcastIsRefused() {
        QFETCH(const QByteArray, document);
        QCOMPARE(summary(parseAppcast(document, feedUrl)), QStringList{u"malformed"_s});
    }

    void notesAreChosen() {
        const auto notes = [](const QByteArray& descriptions) {
            const auto items = parseAppcast(feed(item(descriptions)), feedUrl);
            return items && items->size() == 1 ? items->constFirst().notes : u"malformed"_s;
        };
        QCOMPARE(notes("<description><![CDATA[<p>One</p><p>Two</p>]]></description>"), u"One\n\nTwo"_s);
        QCOMPARE(notes("<description>&lt;b&gt;One&lt;/b&gt; &amp;amp; two</description>"), u"One & two"_s);
        QCOMPARE(notes("<description sparkle:format='plain-text'>a &lt;b&gt;\nc</description>"),
                 u"a <b>\nc"_s);
        QCOMPARE(notes("<description xml:lang='de'>Neu</description>"
                       "<description xml:lang='en-GB'>New</description>"
                       "<description xml:lang='fr'>Nouveau</description>"),
                 u"New"_s);
    }

    void htmlBecomesText() {
        const auto text = [](const QString& html) { return plainTextOfHtml(html, 1000); };
        QCOMPARE(text(u"<h2>New</h2>\n<ul>\n <li>One</li>\n <li> Two<br/>lines</li></ul><p>Bye"_s),
                 u"New\n\n• One\n• Two\nlines\n\nBye"_s);
        QCOMPARE(text(u"- one\n- two &lt; 3 < 4\r\n\r\n- AT&T &copy"_s),
                 u"- one\n- two < 3 < 4\n\n- AT&T &copy"_s);
        QCOMPARE(text(u"<i>&#8220;&#x1F600;&#0;&#xD800;&#99999999;&nbsp;&hellip;</i>"_s),
                 u"“\U0001F600&#0;&#xD800;&#99999999; …"_s);
        QCOMPARE(text(u"a<script>alert('<p>')</script><STYLE>p{}</STYLE><!-- <p>b</p> -->c"_s), u"ac"_s);
        QCOMPARE(text(u"a<script>b"_s), u"a"_s);
        QCOMPARE(text(u"a <a href='x"_s), u"a"_s);
        QCOMPARE(text(u"<p>a\u0000\u0007\u001b[31mb\u202ec</p>"_s), u"a[31mbc"_s);
    }

    void longNotesAreShortened() {
        const QString notes = plainTextOfHtml(u"<p>word&amp;</p>"_s.repeated(100'000), 50);
        QCOMPARE(notes.size(), 51);
        QVERIFY(notes.startsWith(u"word&\n\nword&"_s) && notes.endsWith(u'…'));
    }
};

TIDEMARK_TEST(AppcastTest)
#include "AppcastTest.moc"
