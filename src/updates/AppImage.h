#pragma once

#include <QString>

namespace tidemark {

/// The AppImage that contains `program`, the file of the running program, according to the variables of the
/// AppImage runtime; empty when there is none. Programs that an AppImage starts inherit these variables, so
/// `program` must also lie in the folder where the AppImage is mounted.
[[nodiscard]] QString runningAppImage(const QString& program);

/// Removes the AppImage runtime's variables from the environment, so that programs that we start do not
/// mistake themselves for parts of our AppImage.
void forgetAppImage();

}  // namespace tidemark
