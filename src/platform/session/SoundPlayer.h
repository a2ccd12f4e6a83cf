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

    /// Starts "Glass" (a chime) or "Basso" (a thud) and returns at once. Any other name, a missing sound or a
    /// missing device is silence. A sound that is still playing is not started again.
    virtual void play(const QString& name) = 0;
};

}  // namespace tidemark
