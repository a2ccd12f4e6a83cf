#pragma once

#include <QSocketNotifier>
#include <functional>

namespace tidemark {

/// Turns SIGTERM, SIGINT and SIGHUP into a call on the UI thread, so that the program can shut down properly,
/// within the quit limit.
/// At most one instance exists at a time. After its destruction the signals are ignored, because the program
/// is ending already and a terminal that is closed sends the signal twice.
class TerminationSignals {
public:
    /// Until an instance exists, these signals end the process with exit code 0: there is nothing to clean up
    /// yet.
    static void exitUntilMade();

    explicit TerminationSignals(std::function<void()> onSignal);
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;
    ~TerminationSignals() = default;

private:
    std::function<void()> m_onSignal;
    QSocketNotifier m_notifier;
};

}  // namespace tidemark
