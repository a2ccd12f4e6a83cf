#pragma once

#include <memory>

#include "platform/session/SoundPlayer.h"

namespace tidemark {

/// Plays the event sounds of the freedesktop sound theme. The connection to the sound server may take any
/// time, so it is made on a thread. Both exist only while something plays. Two different sounds are played
/// one after the other.
class CanberraSoundPlayer final : public SoundPlayer {
public:
    CanberraSoundPlayer();
    /// Stops the sound that plays. Blocks for a fifth of a second at most: when the sound server does not
    /// answer, the thread is left running.
    ~CanberraSoundPlayer() override;

    void play(const QString& name) override;

private:
    struct Queue;

    /// Shared with the thread, because that may outlive the player.
    std::shared_ptr<Queue> m_queue;
};

}  // namespace tidemark
