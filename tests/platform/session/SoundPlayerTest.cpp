#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <memory>

#include "platform/session/CanberraSoundPlayer.h"
#include "tests/TestProgram.h"

namespace tidemark {
namespace {

using namespace Qt::StringLiterals;

qsizetype threadCount() {
    return QDir(u"/proc/self/task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
}

class SoundPlayerTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        // Clients of sound servers write cookies and caches into these folders.
        for (const char* folder : {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
            qputenv(folder, m_home.path().toUtf8());
        m_threadsBefore = threadCount();
    }

    void cleanup() { QTRY_COMPARE(threadCount(), m_threadsBefore); }

    void endsWhileSoundsPlay() {
        qputenv("CANBERRA_DRIVER", "null");
        for (int round = 0; round < 20; ++round) {
            CanberraSoundPlayer player;
            player.play(u"Glass"_s);
            player.play(u"Basso"_s);
        }
    }

    void silentServerHoldsUpNobody() {
        QLocalServer server;  // accepts connections and never answers
        QVERIFY(server.listen(m_home.filePath(u"native"_s)));
        qputenv("CANBERRA_DRIVER", "pulse");
        qputenv("PULSE_SERVER", "unix:" + server.fullServerName().toUtf8());
        const auto takeConnection = [&server] {
            [&server] { QTRY_VERIFY(server.hasPendingConnections()); }();
            return std::unique_ptr<QLocalSocket>(server.nextPendingConnection());
        };
        auto player = std::make_unique<CanberraSoundPlayer>();
        for (int round = 0; round < 50; ++round)
            for (const auto& name : {u"Sosumi"_s, u"glass"_s, u"complete"_s, u""_s, u"Glass"_s, u"Basso"_s})
                player->play(name);
        // Each of the two known sounds once, one after the other. libcanberra reconnects once after each
        // hang-up.
        auto playing = takeConnection();
        QTest::qWait(50);
        QVERIFY(!server.hasPendingConnections());
        playing.reset();
        for (int more = 0; more < 3; ++more)
            takeConnection().reset();
        QTRY_COMPARE(threadCount(), m_threadsBefore);
        QVERIFY(!server.hasPendingConnections());

        player->play(u"Glass"_s);
        playing = takeConnection();
        player.reset();
    }

private:
    QTemporaryDir m_home;
    qsizetype m_threadsBefore = 0;
};

}  // namespace
}  // namespace tidemark

TIDEMARK_TEST(tidemark::SoundPlayerTest)
#include "SoundPlayerTest.moc"
