#pragma once

#include <QString>

namespace tidemark {

/// The file of the AppImage that `program` (the file of the running program) comes from, after what the
/// AppImage runtime puts into the environment; empty when it comes from none. Programs that an AppImage
/// starts inherit its environment: only what lies in its folder is part of it.
[[nodiscard]] QString runningAppImage(const QString& program);

/// Takes the AppImage runtime's variables out of the environment, so that programs that are started from here
/// do not take themselves for a part of it.
void forgetAppImage();

}  // namespace tidemark
