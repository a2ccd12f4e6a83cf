#pragma once

#include <optional>

namespace tidemark {

/// Whether a client grabs the pointer at the moment, as clients do while they show a menu. Nothing except on
/// X11. UI thread only; blocks for a few answers of the X server.
[[nodiscard]] std::optional<bool> isPointerGrabbed();

}  // namespace tidemark
