#pragma once

#include <QStringList>

#include "platform/session/SoundPlayer.h"

namespace tidemark {

/// A sound player that only remembers the names.
class FakeSoundPlayer final : public SoundPlayer {
public:
    QStringList names;

    void play(const QString& name) override { names.append(name); }
};

}  // namespace tidemark
