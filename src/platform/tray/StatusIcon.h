#pragma once

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QList>

#include "platform/tray/StatusItem.h"

namespace tidemark {

/// One size of an icon as panels receive it: ARGB, four bytes a pixel, not premultiplied, most significant
/// byte first.
struct IconPixmap {
    int width = 0;
    int height = 0;
    QByteArray bytes;

    bool operator==(const IconPixmap&) const = default;
};
using IconPixmaps = QList<IconPixmap>;

/// The colour of a rim for something of this colour that a dark panel would swallow; invalid where none is
/// needed.
[[nodiscard]] QColor rimFor(const QColor& color);

/// Draws a square icon: the image fitted into it, and, when `dot` is valid, a dot of that colour in the
/// bottom right corner. The dot has a transparent ring around it, so that it stands off from the image on
/// any panel. A template is tinted in a mid tone that reads on dark and on light panels alike.
[[nodiscard]] QImage drawStatusIcon(const StatusImage& image, const QColor& dot, int size);

/// The icon in the sizes that panels ask for, at single and double scale.
[[nodiscard]] IconPixmaps statusIconPixmaps(const StatusImage& image, const QColor& dot);

}  // namespace tidemark
