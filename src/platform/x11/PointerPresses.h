#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <cstdint>
#include <memory>

namespace tidemark {

class XServer;

/// Hears of the pointer's buttons wherever it is, without grabbing it: whoever is clicked on gets the click
/// as well. The wheel's buttons do not count. Touches neither: where they matter, the focus goes with them.
class PointerPresses final : public QObject {
    Q_OBJECT

public:
    /// Nothing anywhere but on X11, or where the server cannot tell: it lacks the X Input Extension 2.2.
    [[nodiscard]] static std::unique_ptr<PointerPresses> watch();
    ~PointerPresses() override;

    /// Tells of everything that has arrived, without waiting for the event loop.
    void readPending();

Q_SIGNALS:
    /// Slots may destroy the sender.
    void pressed();
    void released();

private:
    PointerPresses(std::unique_ptr<XServer> server, uint8_t extension);

    /// Nobody else's: waiting for an answer would take events off the descriptor without a notice.
    std::unique_ptr<XServer> m_server;
    uint8_t m_extension;
    QSocketNotifier m_notifier;
};

}  // namespace tidemark
