#include <QUuid>

#include "preferences/AccountCardModel.h"
#include "preferences/AccountDraft.h"
#include "tests/TestProgram.h"

using namespace tidemark;
using namespace Qt::StringLiterals;

class AccountDraftTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void textsAreTrimmedWhenSaved_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("saved");
        QTest::newRow("spaces and tabs") << u"  \tWork \t "_s << u"Work"_s;
        QTest::newRow("other spaces") << u"\u00a0\u2003Work\u3000"_s << u"Work"_s;
        QTest::newRow("spaces within") << u"My  work"_s << u"My  work"_s;
        QTest::newRow("a line break ends the trimming") << u" Work \n"_s << u"Work \n"_s;
        QTest::newRow("nothing else is a space") << u"\u200bWork"_s << u"\u200bWork"_s;
    }

    void textsAreTrimmedWhenSaved() {
        QFETCH(const QString, typed);
        QFETCH(const QString, saved);
        const AccountDraft draft{.id = u" id "_s, .name = typed, .teamId = typed, .apiToken = typed};
        QCOMPARE(draft.asVercelAccount(),
                 (VercelAccount{.id = u" id "_s, .name = saved, .teamId = saved, .apiToken = saved}));
    }

    void aBlankNameIsReplaced() {
        for (const QString& name : {QString(), u" \t "_s})
            QCOMPARE(AccountDraft{.name = name}.asVercelAccount().name, u"Account"_s);
        QCOMPARE(AccountDraft{.apiToken = u"\t "_s}.asVercelAccount().apiToken, QString());
    }

    void newDraftsAreEmptyAndDistinct() {
        const AccountDraft first = AccountDraft::makeNew();
        QCOMPARE(first, (AccountDraft{.id = first.id}));
        QCOMPARE(QUuid(first.id).toString(QUuid::WithoutBraces).toUpper(), first.id);
        QVERIFY(first.id != AccountDraft::makeNew().id);
    }

    void lineBreaksOfWhatIsPastedGo() {
        AccountCardModel card({.id = u"1"_s});
        card.setApiToken(u"\r\nvcp_ab\ncd\u2028\n"_s);
        card.setTeamId(u"team_x\n"_s);
        card.setName(u"\nMy\nwork\n"_s);
        QCOMPARE(card.draft(),
                 (AccountDraft{
                     .id = u"1"_s, .name = u"My work"_s, .teamId = u"team_x"_s, .apiToken = u"vcp_abcd"_s}));
    }
};

TIDEMARK_TEST(AccountDraftTest)
#include "AccountDraftTest.moc"
