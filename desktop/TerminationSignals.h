#pragma once

#include <QSocketNotifier>
#include <functional>

namespace tidemark {

/// Turns SIGTERM, SIGINT and SIGHUP into a call on the UI thread, so that the program ends in order. At most
/// one at a time in a process; the signals' default action comes back when it goes.
class TerminationSignals {
public:
    explicit TerminationSignals(std::function<void()> onSignal);
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;
    ~TerminationSignals();

private:
    std::function<void()> m_onSignal;
    QSocketNotifier m_notifier;
};

}  // namespace tidemark
