#pragma once

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QList>

#include "platform/tray/StatusItem.h"

namespace tidemark {

/// One size of an icon in the protocol's format: ARGB, four bytes per pixel, not premultiplied, in network
/// byte order.
struct IconPixmap {
    int width = 0;
    int height = 0;
    QByteArray bytes;

    bool operator==(const IconPixmap&) const = default;
};
using IconPixmaps = QList<IconPixmap>;

/// The colour of the rim that a shape of this colour needs to be visible on a dark panel; invalid where it
/// needs none.
[[nodiscard]] QColor rimFor(const QColor& color);

/// Draws a square icon: the image scaled to fit and, when `dot` is valid, a dot of that colour in the bottom
/// right corner. A transparent ring separates the dot from the image on any panel. Templates are tinted in a
/// mid tone that is visible on dark and light panels.
[[nodiscard]] QImage drawStatusIcon(const StatusImage& image, const QColor& dot, int size);

/// The icon in the sizes that panels use, at single and double scale.
[[nodiscard]] IconPixmaps statusIconPixmaps(const StatusImage& image, const QColor& dot);

}  // namespace tidemark
