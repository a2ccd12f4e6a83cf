#include "platform/windows/PopoverPlacement.h"

#include <algorithm>

namespace tidemark {
namespace {

enum class Edge : quint8 { top, bottom, left, right };

/// Assumed maximal thickness of panels, in logical pixels.
constexpr int thickestPanel = 96;
/// Minimal and maximal space to leave for a panel of unknown size.
constexpr int thinPanel = 32;
constexpr int thickPanel = 64;

/// The distance of `place` from an edge of `area`; negative outside of it.
int distanceTo(Edge edge, QPoint place, const QRect& area) {
    switch (edge) {
        case Edge::top:
            return place.y() - area.top();
        case Edge::bottom:
            return area.bottom() - place.y();
        case Edge::left:
            return place.x() - area.left();
        case Edge::right:
            return area.right() - place.x();
    }
    return 0;
}

/// The edge nearest to `place`. In a corner the upper or lower edge, because most panels are horizontal.
Edge nearestEdge(QPoint place, const QRect& area) {
    const auto nearer = [&](Edge one, Edge other) {
        return distanceTo(other, place, area) < distanceTo(one, place, area) ? other : one;
    };
    const Edge horizontal = nearer(Edge::top, Edge::bottom);
    const Edge vertical = nearer(Edge::left, Edge::right);
    return distanceTo(horizontal, place, area) < thickPanel ? horizontal : nearer(horizontal, vertical);
}

bool isPanelPlace(QPoint place, const ScreenArea& screen) {
    return !screen.available.contains(place) ||
           distanceTo(nearestEdge(place, screen.geometry), place, screen.geometry) < thickestPanel;
}

/// The part of a panel that is on the screen. Empty for a large window, because some docks cover the screen
/// with a mostly transparent one.
QRect panelOn(const ScreenArea& screen, const QRect& panel) {
    const QRect visible = panel & screen.geometry;
    return visible.width() > screen.geometry.width() / 3 && visible.height() > screen.geometry.height() / 3
               ? QRect()
               : visible;
}

Edge edgeOf(const PopoverAnchor& anchor, const ScreenArea& screen) {
    if (!anchor.panel.isEmpty()) {
        const QPoint middle = screen.geometry.center();
        if (anchor.panel.width() >= anchor.panel.height())
            return anchor.panel.center().y() <= middle.y() ? Edge::top : Edge::bottom;
        return anchor.panel.center().x() <= middle.x() ? Edge::left : Edge::right;
    }
    for (const Edge edge : {Edge::top, Edge::bottom, Edge::left, Edge::right})
        if (distanceTo(edge, anchor.place, screen.available) < 0)
            return edge;
    return nearestEdge(anchor.place, screen.geometry);
}

/// The thickness of the panel at that edge.
int thicknessAt(Edge edge, const PopoverAnchor& anchor, const ScreenArea& screen) {
    const auto gapTo = [&](const QRect& inner) {
        return distanceTo(edge, {}, screen.geometry) - distanceTo(edge, {}, inner);
    };
    const int reserved = gapTo(screen.available);
    if (!anchor.panel.isEmpty()) {
        const bool isVertical = edge == Edge::left || edge == Edge::right;
        const int panel = isVertical ? anchor.panel.width() : anchor.panel.height();
        return std::max(reserved, gapTo(anchor.panel) + panel);
    }
    if (reserved > 0)
        return reserved;
    // Assumes that the click was near the middle of the panel.
    const int distance = distanceTo(edge, anchor.place, screen.geometry);
    return std::max(distance + 1, std::clamp(2 * distance, thinPanel, thickPanel));
}

QRect roomBeside(Edge edge, int thickness, const ScreenArea& screen) {
    QRect room = screen.available;
    switch (edge) {
        case Edge::top:
            room.setTop(screen.geometry.top() + thickness);
            break;
        case Edge::bottom:
            room.setBottom(screen.geometry.bottom() - thickness);
            break;
        case Edge::left:
            room.setLeft(screen.geometry.left() + thickness);
            break;
        case Edge::right:
            room.setRight(screen.geometry.right() - thickness);
            break;
    }
    return room;
}

}  // namespace

PopoverAnchor choosePopoverAnchor(const QList<QPoint>& places, const QList<ScreenArea>& screens,
                                  const std::function<QRect(QPoint)>& panelAt) {
    for (const QPoint place : places) {
        const auto screen = std::find_if(screens.begin(), screens.end(), [&](const ScreenArea& candidate) {
            return candidate.geometry.contains(place);
        });
        if (screen == screens.end())
            continue;
        const QRect panel = panelOn(*screen, panelAt(place));
        if (!panel.isEmpty() || isPanelPlace(place, *screen))
            return {.place = place, .panel = panel};
    }
    return {.place = screens.constFirst().geometry.topRight()};
}

QRect roomBesidePanel(const PopoverAnchor& anchor, const ScreenArea& screen) {
    const QRect panel = panelOn(screen, anchor.panel);
    if (panel.isEmpty())
        return screen.available;
    const PopoverAnchor within{.place = anchor.place, .panel = panel};
    const Edge edge = edgeOf(within, screen);
    return roomBeside(edge, thicknessAt(edge, within, screen), screen);
}

QRect placePopover(QSize size, const PopoverAnchor& anchor, const ScreenArea& screen) {
    const Edge edge = edgeOf(anchor, screen);
    const QRect room = roomBeside(edge, thicknessAt(edge, anchor, screen), screen);
    QRect popover(QPoint(), size.boundedTo(room.size()).expandedTo({1, 1}));
    // Centred on the anchor, which is outside the room, and then moved until it is inside.
    popover.moveTopLeft(anchor.place - QPoint(popover.width() / 2, popover.height() / 2));
    popover.moveRight(std::min(popover.right(), room.right()));
    popover.moveBottom(std::min(popover.bottom(), room.bottom()));
    popover.moveLeft(std::max(popover.left(), room.left()));
    popover.moveTop(std::max(popover.top(), room.top()));
    return popover;
}

}  // namespace tidemark
