#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <cstdint>
#include <memory>

namespace tidemark {

class XServer;

/// Reports presses of the pointer's buttons anywhere on the screen. It does not grab the pointer, so the
/// window that is clicked gets the click as well. The wheel does not count. Touch input does not count
/// either; where it matters, a focus change follows it.
class PointerPresses final : public QObject {
    Q_OBJECT

public:
    /// Null except on X11, and where the server lacks the X Input Extension 2.2.
    [[nodiscard]] static std::unique_ptr<PointerPresses> watch();
    ~PointerPresses() override;

    /// Emits the signals for all events that have arrived, without waiting for the event loop.
    void readPending();

Q_SIGNALS:
    /// Slots may destroy the sender.
    void pressed();
    void released();

private:
    PointerPresses(std::unique_ptr<XServer> server, uint8_t extension);

    /// Not shared, because another user who waits for an answer would read our events from the descriptor,
    /// and the notifier would not fire for them.
    std::unique_ptr<XServer> m_server;
    uint8_t m_extension;
    QSocketNotifier m_notifier;
};

}  // namespace tidemark
