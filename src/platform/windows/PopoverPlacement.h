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
    /// The part that panels leave free. Equals `geometry` where that is unknown: with several screens or with
    /// panels that hide.
    QRect available;
};

/// Where a popover belongs, in Qt's global coordinates.
struct PopoverAnchor {
    /// The position of the click or the item.
    QPoint place;
    /// The panel that was clicked on; empty when unknown.
    QRect panel;
};

/// Chooses the first of `places` where a panel can be: in a panel according to `panelAt` (which gives an
/// empty rectangle for none), outside of a screen's available area, or near a screen's edge. Otherwise the
/// upper right corner of the first screen, which must be the primary one. There must be at least one screen.
[[nodiscard]] PopoverAnchor choosePopoverAnchor(const QList<QPoint>& places, const QList<ScreenArea>& screens,
                                                const std::function<QRect(QPoint)>& panelAt);

/// The screen's available area without the anchor's panel, if that is known.
[[nodiscard]] QRect roomBesidePanel(const PopoverAnchor& anchor, const ScreenArea& screen);

/// Where to show a popover of that size: beside the anchor's panel and as near to the anchor as the screen
/// allows. It is made smaller when there is not enough room.
[[nodiscard]] QRect placePopover(QSize size, const PopoverAnchor& anchor, const ScreenArea& screen);

}  // namespace tidemark
