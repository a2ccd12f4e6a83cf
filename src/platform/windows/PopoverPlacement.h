#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <functional>

namespace tidemark {

/// A screen, in Qt's global coordinates.
struct ScreenArea {
    QRect geometry;
    /// What panels leave of it. The same as `geometry` where that is not known: with several screens, or when
    /// panels hide themselves.
    QRect available;
};

/// Where a popover belongs, in Qt's global coordinates.
struct PopoverAnchor {
    /// The click, or the item.
    QPoint place;
    /// The panel that was clicked on; empty when it is not known.
    QRect panel;
};

/// The first of these places where a panel can be: inside of one, as `panelAt` tells (empty: none there), or
/// outside of a screen's available area, or not far from a screen's edge. When none of them can be true, the
/// upper right corner of the first screen, which is the primary one. There must be one screen at least.
[[nodiscard]] PopoverAnchor choosePopoverAnchor(const QList<QPoint>& places, const QList<ScreenArea>& screens,
                                                const std::function<QRect(QPoint)>& panelAt);

/// What of the screen is left beside the panel that the anchor is in; all of the available area when no panel
/// is known.
[[nodiscard]] QRect roomBesidePanel(const PopoverAnchor& anchor, const ScreenArea& screen);

/// Where to show a popover of that size: beside the panel that the anchor is in, as near to the anchor as the
/// screen allows. It is made smaller when there is not enough room.
[[nodiscard]] QRect placePopover(QSize size, const PopoverAnchor& anchor, const ScreenArea& screen);

}  // namespace tidemark
