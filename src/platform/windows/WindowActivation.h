#pragma once

#include <QWindow>

namespace tidemark {

/// Raises the window, which is shown or about to be, and gives it the focus, as the user's own wish of this
/// moment: an activation token that is on offer is used up, and a window manager on X11 is asked once the
/// window is on the screen.
void bringToFront(QWindow& window);

}  // namespace tidemark
