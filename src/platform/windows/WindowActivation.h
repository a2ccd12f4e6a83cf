#pragma once

#include <QWindow>

namespace tidemark {

/// Raises a window that is shown or about to be, and gives it the focus, as a request by the user at this
/// time. This uses up the offered activation token. On X11 it asks the window manager once the window is on
/// the screen.
void bringToFront(QWindow& window);

}  // namespace tidemark
