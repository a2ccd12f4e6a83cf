#include "controls/Symbol.h"

#include <QFile>
#include <QPainter>
#include <QPixmap>
#include <QPixmapCache>
#include <QQuickWindow>
#include <QSvgRenderer>
#include <cmath>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

/// The box of a symbol, as a part of the size of its text.
constexpr qreal boxShare = 1.2;

QPixmap drawn(const QString& name, const QColor& color, int pixels) {
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    const QString path = u":/symbols/%1.svg"_s.arg(name);
    if (!QFile::exists(path))
        return pixmap;
    QPainter painter(&pixmap);
    QSvgRenderer(path).render(&painter);
    // The drawing gives the shape only.
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), color);
    return pixmap;
}

}  // namespace

void Symbol::setName(const QString& name) {
    if (name == m_name)
        return;
    m_name = name;
    update();
    Q_EMIT nameChanged();
}

void Symbol::setColor(const QColor& color) {
    if (color == m_color)
        return;
    m_color = color;
    update();
    Q_EMIT colorChanged();
}

void Symbol::setFontSize(qreal size) {
    if (size == m_fontSize)
        return;
    m_fontSize = size;
    const qreal box = std::round(size * boxShare);
    setImplicitSize(box, box);
    update();
    Q_EMIT fontSizeChanged();
}

void Symbol::paint(QPainter& painter) const {
    const qreal ratio = window()->effectiveDevicePixelRatio();
    const qreal side = std::round(m_fontSize * boxShare);
    const int pixels = static_cast<int>(std::round(side * ratio));
    if (pixels <= 0)
        return;
    // Every row of a list has the same few.
    const QString key = u"symbol/%1/%2/%3"_s.arg(m_name, m_color.name(QColor::HexArgb)).arg(pixels);
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = drawn(m_name, m_color, pixels);
        QPixmapCache::insert(key, pixmap);
    }
    pixmap.setDevicePixelRatio(ratio);
    // On whole pixels of the screen, so that it stays as crisp as it was drawn.
    const QPointF corner =
        painter.worldTransform().map(QPointF((width() - side) / 2, (height() - side) / 2)) * ratio;
    painter.setWorldTransform({});
    painter.drawPixmap(QPointF(corner.toPoint()) / ratio, pixmap);
}

}  // namespace tidemark
