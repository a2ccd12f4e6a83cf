#pragma once

#include <QSocketNotifier>
#include <functional>

namespace tidemark {

/// Turns SIGTERM, SIGINT and SIGHUP into a call on the UI thread, so that the program ends in order. At most
/// one at a time in a process. What comes after it has gone is ignored: the program is ending already, and
/// terminals that are closed send the signal twice.
class TerminationSignals {
public:
    /// Until there is one, has the signals end the process at once and with success: nothing has been begun
    /// that would have to be put in order.
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
