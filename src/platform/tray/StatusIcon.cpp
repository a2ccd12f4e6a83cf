#include "platform/tray/StatusIcon.h"

#include <QPainter>
#include <QtEndian>
#include <algorithm>
#include <array>
#include <cmath>

namespace tidemark {
namespace {

constexpr std::array iconSizes{16, 22, 24, 32, 44, 48, 64};

/// Has a contrast of more than 3:1 both with light panels (#f6f5f4) and with dark ones (#353535), because an
/// item is not told which of them it is in.
constexpr QColor templateTint(0x84, 0x88, 0x8e);

void drawFitted(QPainter& painter, const StatusImage& image, int size) {
    const double longest = std::max(image.size.width(), image.size.height()) - 2 * image.margin;
    if (!image.draw || longest <= 0)
        return;
    const double scale = size / longest;
    painter.save();
    painter.translate((size - image.size.width() * scale) / 2, (size - image.size.height() * scale) / 2);
    painter.scale(scale, scale);
    image.draw(painter);
    painter.restore();
    if (image.isTemplate) {
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(0, 0, size, size, templateTint);
    }
}

/// The dot has a size in whole pixels, so that it looks round in an icon of 16 pixels.
void drawDot(QPainter& painter, const QColor& color, int size) {
    const int diameter = static_cast<int>(std::lround(size * 0.46));
    const int ring = std::max(1, static_cast<int>(std::lround(size / 14.0)));
    const QRect dot(size - diameter, size - diameter, diameter, diameter);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    painter.drawEllipse(dot.adjusted(-ring, -ring, ring, ring));
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    const QColor rimColor = rimFor(color);
    painter.setBrush(rimColor.isValid() ? rimColor : color);
    painter.drawEllipse(dot);
    if (rimColor.isValid()) {
        const int rim = std::max(1, static_cast<int>(std::lround(size / 20.0)));
        painter.setBrush(color);
        painter.drawEllipse(dot.adjusted(rim, rim, -rim, -rim));
    }
}

IconPixmap toPixmap(const QImage& image) {
    const QImage straight = image.convertToFormat(QImage::Format_ARGB32);
    IconPixmap pixmap{straight.width(), straight.height(),
                      QByteArray(straight.sizeInBytes(), Qt::Uninitialized)};
    qToBigEndian<quint32>(straight.constBits(), straight.sizeInBytes() / qsizetype(sizeof(quint32)),
                          pixmap.bytes.data());
    return pixmap;
}

}  // namespace

QColor rimFor(const QColor& color) {
    constexpr int dark = 100;
    QColor rim = templateTint;
    rim.setAlpha(color.alpha());
    return color.lightness() < dark ? rim : QColor();
}

QImage drawStatusIcon(const StatusImage& image, const QColor& dot, int size) {
    QImage canvas(size, size, QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::transparent);
    QPainter painter(&canvas);
    painter.setRenderHint(QPainter::Antialiasing);
    drawFitted(painter, image, size);
    if (dot.isValid())
        drawDot(painter, dot, size);
    return canvas;
}

IconPixmaps statusIconPixmaps(const StatusImage& image, const QColor& dot) {
    IconPixmaps pixmaps;
    pixmaps.reserve(iconSizes.size());
    for (const int size : iconSizes)
        pixmaps.append(toPixmap(drawStatusIcon(image, dot, size)));
    return pixmaps;
}

}  // namespace tidemark
