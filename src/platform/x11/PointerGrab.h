#pragma once

#include <optional>

namespace tidemark {

/// Whether a program holds the pointer at this moment, as one does while it shows a menu. Nothing where that
/// cannot be told: anywhere but on X11. UI thread only; waits for one answer of the X server.
[[nodiscard]] std::optional<bool> isPointerGrabbed();

}  // namespace tidemark
