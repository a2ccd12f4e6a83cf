#include "platform/windows/ToolTipWindow.h"

#include <QColor>
#include <QFont>
#include <QGuiApplication>
#include <QMargins>
#include <QPainter>
#include <QRect>
#include <QScreen>
#include <QTextOption>
#include <algorithm>
#include <cmath>

#include "platform/base/Characters.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestText = 1000;
/// In code units, because the layout of a thousand emoji of a dozen code points each takes half a second.
constexpr qsizetype longestCode = 4 * longestText;
constexpr int widestToolTip = 300;
constexpr int fontSize = 11;
constexpr QMargins textPadding(8, 5, 8, 5);
/// Distances from the pointer's tip. The pointer's image extends downwards.
constexpr int gapBelow = 18;
constexpr int gapAbove = 6;

constexpr QRgb fillColor = qRgb(0x3a, 0x3a, 0x3a);
constexpr int outlineAlpha = 38;
constexpr int textAlpha = 230;

QString shownText(const QString& text) {
    QString shown = firstCharacters(text.left(longestCode), longestText);
    if (shown.size() < text.size())
        shown += QChar(0x2026);
    shown.replace(u"\r\n"_s, u"\n"_s);
    for (QChar& character : shown)
        if (character == u'\n' || character == u'\r' || character == QChar::ParagraphSeparator)
            character = QChar::LineSeparator;
        else if (character.category() == QChar::Other_Control)
            character = u' ';
    return shown.trimmed();
}

QFont toolTipFont() {
    QFont font = QGuiApplication::font();
    font.setPixelSize(fontSize);
    return font;
}

QRect placed(QSize size, QPoint place, const QRect& screen) {
    const QPoint end = screen.topLeft() + QPoint(screen.width(), screen.height());
    const int below = place.y() + gapBelow;
    const int y = below + size.height() <= end.y() ? below : place.y() - gapAbove - size.height();
    return {QPoint(std::clamp(place.x(), screen.x(), end.x() - size.width()),
                   std::clamp(y, screen.y(), end.y() - size.height())),
            size};
}

}  // namespace

ToolTipWindow::ToolTipWindow() {
    setFlags(Qt::ToolTip | Qt::WindowTransparentForInput | Qt::WindowDoesNotAcceptFocus);
    m_layout.setCacheEnabled(true);
}

void ToolTipWindow::showText(const QString& text, QPoint place, QWindow* owner) {
    const QString shown = shownText(text);
    if (shown.isEmpty() || !owner->isVisible()) {
        hide();
        return;
    }
    follow(owner);
    setScreen(owner->screen());
    const QRect available = screen()->availableGeometry();
    // A window of half the height of the screen fits either above or below the pointer.
    const QSize room(widestToolTip, (available.height() / 2) - gapBelow);
    setGeometry(placed(layOut(shown, room.boundedTo(available.size())), place, available));
    show();
    // X11 restores the stacking order of a window, which may be below an owner that has been raised since.
    if (QGuiApplication::platformName() == u"xcb"_s)
        raise();
    update();
}

void ToolTipWindow::follow(QWindow* owner) {
    QWindow* const before = transientParent();
    if (owner == before)
        return;
    if (before)
        disconnect(before, nullptr, this, nullptr);
    setTransientParent(owner);
    connect(owner, &QWindow::visibleChanged, this, [this](bool isVisible) {
        if (!isVisible)
            hide();
    });
    connect(owner, &QObject::destroyed, this, &QWindow::hide);
}

QSize ToolTipWindow::layOut(const QString& text, QSize room) {
    const QSize taken = room.shrunkBy(textPadding);
    const bool isRightToLeft = text.isRightToLeft();
    QTextOption option(isRightToLeft ? Qt::AlignRight : Qt::AlignLeft);
    option.setTextDirection(isRightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    m_layout.setText(text);
    m_layout.setFont(toolTipFont());
    m_layout.setTextOption(option);
    qreal width = 0;
    qreal height = 0;
    qsizetype lastStart = 0;
    m_layout.beginLayout();
    for (QTextLine line = m_layout.createLine(); line.isValid(); line = m_layout.createLine()) {
        line.setLineWidth(taken.width());
        line.setPosition({0, height});
        if (height + std::ceil(line.height()) > taken.height() && lastStart > 0) {
            m_layout.endLayout();
            return layOut(text.first(lastStart) + QChar(0x2026), room);
        }
        width = std::max(width, line.naturalTextWidth());
        height += std::ceil(line.height());
        lastStart = line.textStart();
    }
    m_layout.endLayout();
    const QSize used(std::min(static_cast<int>(std::ceil(width)), taken.width()), static_cast<int>(height));
    m_origin = {textPadding.left() - (isRightToLeft ? taken.width() - used.width() : 0), textPadding.top()};
    return used.grownBy(textPadding);
}

void ToolTipWindow::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const QRect window(QPoint(), size());
    painter.fillRect(window, QColor(fillColor));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QColor(255, 255, 255, outlineAlpha));
    painter.drawRect(QRectF(window).adjusted(0.5, 0.5, -0.5, -0.5));
    painter.setPen(QColor(255, 255, 255, textAlpha));
    m_layout.draw(&painter, m_origin);
}

}  // namespace tidemark
