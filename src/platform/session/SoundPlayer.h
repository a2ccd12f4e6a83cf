#pragma once

#include <QString>

namespace tidemark {

/// Plays the desktop's named event sounds.
class SoundPlayer {
public:
    SoundPlayer() = default;
    SoundPlayer(const SoundPlayer&) = delete;
    SoundPlayer& operator=(const SoundPlayer&) = delete;
    virtual ~SoundPlayer() = default;

    /// Starts "Glass" (a chime) or "Basso" (a thud) without waiting for it. Does nothing for any other name,
    /// without the sound or a device, and while the same sound is playing.
    virtual void play(const QString& name) = 0;
};

}  // namespace tidemark
