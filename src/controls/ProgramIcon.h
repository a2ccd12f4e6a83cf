#pragma once

#include <QIcon>

namespace tidemark {

/// The program's own icon, for the frames of its windows, wherever it is installed or not.
[[nodiscard]] QIcon programIcon();

}  // namespace tidemark
