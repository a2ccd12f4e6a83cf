#include "tests/TestProgram.h"
#include "vercel/Deployment.h"
#include "vercel/VercelProject.h"

using namespace tidemark;
using namespace Qt::StringLiterals;

namespace {

const QByteArray required =
    R"("uid":"d1","name":"api","url":"api-1.vercel.app","created":1700000000000,"state":"READY")";

/// A list of one deployment with the required members and these.
QByteArray withMembers(const QByteArray& more) {
    return "{\"deployments\":[{" + required + more + "}]}";
}

/// A list of one deployment in which a part is replaced.
QByteArray withChanged(const QByteArray& part, const QByteArray& other) {
    return withMembers({}).replace(part, other);
}

}  // namespace

class VercelRecordsTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void decodesADeployment() {
        const auto response = DeploymentsResponse::decode(withMembers(
            R"(,"ready":9007199254740993,"target":null,"inspectorUrl":"https://x/y","extra":{"a":[1]},)"
            R"("meta":{"githubCommitMessage":"Fix \ud83d it","githubCommitRef":"main","other":5},"alias":["a","b"])"));
        QVERIFY(response);
        const Deployment& deployment = response->deployments.first();
        QCOMPARE(deployment.id, u"d1"_s);
        QCOMPARE(deployment.created, 1700000000000);
        QCOMPARE(deployment.ready, 9007199254740993);  // would lose its last digit as a double
        QVERIFY(!deployment.target);
        QCOMPARE(deployment.meta->githubCommitRef, u"main"_s);
        QVERIFY(deployment.meta->githubCommitMessage->startsWith(
            u"Fix "));  // the API cuts texts even inside of an emoji
        QVERIFY(!deployment.meta->githubCommitSha);
        QCOMPARE(deployment.alias, (QList{u"a"_s, u"b"_s}));
    }

    void deploymentsDecodeOrFailAsAWhole() {
        // The place of the error.
        const auto outcome = [](const QByteArray& json) {
            const auto response = DeploymentsResponse::decode(json);
            return response ? u"ok"_s : u"error: "_s + response.error().path;
        };
        QCOMPARE(outcome(withChanged("uid", "id")), u"error: deployments[0].uid"_s);
        for (const QByteArray created : {"\"1\"", "1.5", "9223372036854775808", "true"})
            QCOMPARE(outcome(withChanged("1700000000000", created)), u"error: deployments[0].created"_s);
        QCOMPARE(outcome(withMembers(R"(,"target":1)")), u"error: deployments[0].target"_s);
        QCOMPARE(outcome(withMembers(R"(,"meta":{"githubCommitRef":1})")),
                 u"error: deployments[0].meta.githubCommitRef"_s);
        QCOMPARE(outcome(withMembers(R"(,"alias":["a",1])")), u"error: deployments[0].alias[1]"_s);
        QCOMPARE(outcome(R"({"deployments":null})"), u"error: deployments"_s);
        const QByteArray deep = QByteArray(5000, '[') + QByteArray(5000, ']');
        for (const QByteArray& json :
             {QByteArray("[]"), QByteArray("<html>"), withChanged("d1", "\xff\xfe"), deep})
            QCOMPARE(outcome(json), u"error: "_s);
        QCOMPARE(outcome(withMembers(R"(,"ready":null,"meta":null,"alias":null,"inspectorUrl":null)")),
                 u"ok"_s);
        QCOMPARE(outcome(withChanged("1700000000000", "1e3")), u"ok"_s);
        QCOMPARE(outcome(withChanged("READY", "Canceled")), u"ok"_s);
        QCOMPARE(outcome(R"({"deployments":[],"pagination":{"count":0}})"), u"ok"_s);
    }

    void projectsAreLenientAboutTheirAccountOnly() {
        const auto response = ProjectsResponse::decode(
            R"({"projects":[{"id":"p1","name":"a","accountId":"acc"},{"id":"p2","name":"b"},)"
            R"({"id":"p3","name":"c","accountId":null},{"id":"p4","name":"d","accountId":{"x":[7]}}],)"
            R"("pagination":{"count":4,"next":1700000000001,"prev":3}})");
        QVERIFY(response);
        QStringList accounts;
        for (const auto& project : response->projects)
            accounts << project.accountId;
        QCOMPARE(accounts, (QStringList{u"acc"_s, {}, {}, {}}));
        QCOMPARE(response->pagination->next, 1700000000001);

        QVERIFY(!ProjectsResponse::decode(R"({"projects":[{"id":"p1"}]})"));
        QVERIFY(!ProjectsResponse::decode(R"({"projects":[],"pagination":{"next":"1"}})"));
        QVERIFY(!ProjectsResponse::decode(R"({"projects":[],"pagination":null})")->pagination);
        QVERIFY(!ProjectsResponse::decode(R"({"projects":[],"pagination":{"next":null}})")->pagination->next);
    }
};

TIDEMARK_TEST(VercelRecordsTest)
#include "VercelRecordsTest.moc"
