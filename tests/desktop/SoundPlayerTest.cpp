#include "desktop/CanberraSoundPlayer.h"

#include <QDir>
#include <QElapsedTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

const QStringList bothSounds{u"Glass"_s, u"Basso"_s};

qsizetype threadCount() {
    return QDir(u"/proc/self/task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
}

/// A sound server that takes connections and never says a word.
class SilentServer final {
public:
    SilentServer() {
        m_server.listen(m_folder.filePath(u"native"_s));
        qputenv("CANBERRA_DRIVER", "pulse");
        qputenv("PULSE_SERVER", "unix:" + m_server.fullServerName().toUtf8());
    }

    [[nodiscard]] qsizetype connectionCount() {
        while (m_server.hasPendingConnections())
            m_connections.emplace_back(m_server.nextPendingConnection());
        return static_cast<qsizetype>(m_connections.size());
    }
    void hangUp() {
        for (const auto& connection : m_connections)
            connection->abort();
    }

private:
    QTemporaryDir m_folder;
    QLocalServer m_server;
    std::vector<std::unique_ptr<QLocalSocket>> m_connections;
};

class SoundPlayerTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void playsOnlyWhatItKnows_data();
    void playsOnlyWhatItKnows();
    void nothingStaysAfterTheSounds();
    void silentServerHoldsUpNobody();
    void endsWhileSoundsPlay();

private:
    QTemporaryDir m_home;
    qsizetype m_threadsBefore = 0;
};

void SoundPlayerTest::initTestCase() {
    // Clients of sound servers leave cookies and caches.
    for (const char* folder : {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
        qputenv(folder, m_home.path().toUtf8());
    m_threadsBefore = threadCount();
}

void SoundPlayerTest::init() {
    qputenv("CANBERRA_DRIVER", "null");
}

void SoundPlayerTest::cleanup() {
    QTRY_COMPARE(threadCount(), m_threadsBefore);
}

void SoundPlayerTest::playsOnlyWhatItKnows_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<qsizetype>("connections");
    QTest::newRow("chime") << "Glass" << qsizetype(1);
    QTest::newRow("thud") << "Basso" << qsizetype(1);
    QTest::newRow("another of that desktop's") << "Sosumi" << qsizetype(0);
    QTest::newRow("in small letters") << "glass" << qsizetype(0);
    QTest::newRow("our theme's name") << "complete" << qsizetype(0);
    QTest::newRow("none") << "" << qsizetype(0);
}

void SoundPlayerTest::playsOnlyWhatItKnows() {
    QFETCH(QString, name);
    QFETCH(qsizetype, connections);
    SilentServer server;
    CanberraSoundPlayer player;
    player.play(name);
    if (connections == 0)
        QTest::qWait(50);
    QTRY_COMPARE(server.connectionCount(), connections);
    server.hangUp();
}

void SoundPlayerTest::nothingStaysAfterTheSounds() {
    CanberraSoundPlayer player;
    for (int round = 0; round < 3; ++round) {
        for (const auto& name : bothSounds)
            player.play(name);
        QTRY_COMPARE(threadCount(), m_threadsBefore);
    }
}

void SoundPlayerTest::silentServerHoldsUpNobody() {
    SilentServer server;
    QElapsedTimer timer;
    {
        CanberraSoundPlayer player;
        timer.start();
        for (int round = 0; round < 50; ++round) {
            for (const auto& name : bothSounds)
                player.play(name);
        }
        QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));
        // Each sound once, one after the other.
        QTRY_COMPARE(server.connectionCount(), qsizetype(1));
        QTest::qWait(50);
        QCOMPARE(server.connectionCount(), qsizetype(1));
        server.hangUp();
        QTRY_COMPARE(server.connectionCount(), qsizetype(2));
        timer.start();
    }
    QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));
    server.hangUp();
}

void SoundPlayerTest::endsWhileSoundsPlay() {
    for (int round = 0; round < 20; ++round) {
        CanberraSoundPlayer player;
        for (const auto& name : bothSounds)
            player.play(name);
    }
}

}  // namespace
}  // namespace tidemark

QTEST_GUILESS_MAIN(tidemark::SoundPlayerTest)
#include "SoundPlayerTest.moc"
