#pragma once

#include <QColor>
#include <QList>
#include <QPainter>
#include <QPoint>
#include <QSizeF>
#include <QString>
#include <functional>
#include <memory>

#include "platform/windows/Menu.h"

namespace tidemark {

/// An image that is drawn when a panel asks for a size, in logical points of `size`.
struct StatusImage {
    QSizeF size;
    /// A template has a shape but no colours of its own: the status bar tints it for the panel.
    bool isTemplate = false;
    /// Draws into (0, 0) – (size.width(), size.height()), y growing downwards. Must give the same picture
    /// each time.
    std::function<void(QPainter&)> draw;
    /// A border in which nothing is drawn, for panels that set images side by side. Those that give every
    /// image a square of its own have no use for it.
    double margin = 0;
};

/// One entry of the panel. It leaves the panel when it is destroyed.
class StatusItem {
public:
    /// Receives the place of the click in global logical pixels, as the panel reports it.
    using Action = std::function<void(QPoint)>;

    StatusItem() = default;
    StatusItem(const StatusItem&) = delete;
    StatusItem& operator=(const StatusItem&) = delete;
    virtual ~StatusItem() = default;

    virtual void setImage(const StatusImage& image) = 0;
    /// The colour of the dot in the image; an invalid one for none.
    virtual void setDot(const QColor& color) = 0;
    /// A short text for panels that show one beside the image, and for the hover text of the others. May be
    /// empty.
    virtual void setLabel(const QString& label) = 0;
    virtual void setToolTip(const QString& toolTip) = 0;
    /// What a click does. Not for an item with a menu, which shows that.
    virtual void setAction(Action action) = 0;
    /// The menu that the item is from now on. Set again, an open menu changes its texts in place; other
    /// entries than before appear in it as soon as that does not disturb it, at the latest when it is opened
    /// next.
    virtual void setMenu(const Menu& menu) = 0;
};

/// The panel's tray.
class StatusBar {
public:
    StatusBar() = default;
    StatusBar(const StatusBar&) = delete;
    StatusBar& operator=(const StatusBar&) = delete;
    virtual ~StatusBar() = default;

    /// A new item. `id` is stable over runs and distinct from every other item's, so that panels remember
    /// the item's place. Empty when there is no status bar to ask (no session bus).
    [[nodiscard]] virtual std::unique_ptr<StatusItem> createStatusItem(const QString& id) = 0;

    /// Whether there has been somebody to show the items since the program started.
    [[nodiscard]] virtual bool hasHost() const = 0;
};

}  // namespace tidemark
