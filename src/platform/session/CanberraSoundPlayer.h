#pragma once

#include <memory>

#include "platform/session/SoundPlayer.h"

namespace tidemark {

/// Plays the event sounds of the freedesktop sound theme. Connecting to the sound server may take any time,
/// so it is done on a thread that is there only while something plays: afterwards neither a thread nor a
/// connection stays. Two different sounds are played one after the other.
class CanberraSoundPlayer final : public SoundPlayer {
public:
    CanberraSoundPlayer();
    /// Breaks off what plays. Takes a moment at most, even when the sound server does not answer: its thread
    /// is then left behind.
    ~CanberraSoundPlayer() override;

    void play(const QString& name) override;

private:
    struct Queue;

    /// Shared with the thread, which may outlive the player.
    std::shared_ptr<Queue> m_queue;
};

}  // namespace tidemark
