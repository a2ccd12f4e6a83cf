#pragma once

#include <QProcess>
#include <QTemporaryDir>

#include "tests/TestProgram.h"
#include "tests/fakes/Files.h"

namespace tidemark {

/// A D-Bus daemon of its own, on which nobody is and which starts no services.
class EmptyBus final {
public:
    EmptyBus() {
        using namespace Qt::StringLiterals;
        const QString settings = m_folder.filePath(u"bus.conf"_s);
        writeFile(settings, "<busconfig><type>session</type><listen>unix:dir=" + m_folder.path().toUtf8() +
                                "</listen><policy context=\"default\"><allow send_destination=\"*\"/>"
                                "<allow own=\"*\"/><allow eavesdrop=\"true\"/></policy></busconfig>");
        m_daemon.start(u"dbus-daemon"_s,
                       {u"--nofork"_s, u"--print-address"_s, u"--config-file="_s + settings});
        if (m_daemon.waitForReadyRead(hangLimit))
            m_address = QString::fromUtf8(m_daemon.readLine().trimmed());
    }
    EmptyBus(const EmptyBus&) = delete;
    EmptyBus& operator=(const EmptyBus&) = delete;
    ~EmptyBus() { end(); }

    [[nodiscard]] const QString& address() const { return m_address; }

    /// Ends the daemon, as at the end of a session.
    void end() {
        m_daemon.kill();
        m_daemon.waitForFinished(hangLimit);
    }

private:
    QTemporaryDir m_folder;
    QProcess m_daemon;
    QString m_address;
};

}  // namespace tidemark
