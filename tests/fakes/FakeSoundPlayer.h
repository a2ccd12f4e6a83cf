#pragma once

#include "desktop/SoundPlayer.h"

#include <QStringList>

namespace tidemark {

/// A sound player that only remembers the names.
class FakeSoundPlayer final : public SoundPlayer {
public:
    QStringList names;

    void play(const QString& name) override { names.append(name); }
};

}  // namespace tidemark
