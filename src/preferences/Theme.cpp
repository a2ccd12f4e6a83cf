#include "preferences/Theme.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QGuiApplication>
#include <algorithm>
#include <cmath>

namespace tidemark {

namespace {

/// As the sizes of text styles go with a body of 13.
constexpr double captionShare = 10.0 / 13;
constexpr double title2Share = 17.0 / 13;
constexpr int smallestCaption = 10;

int systemSize() {
    return QFontInfo(QGuiApplication::font()).pixelSize();
}

}  // namespace

Theme::Theme(QObject* parent) : QObject(parent) {
    connect(&m_appearance, &Appearance::changed, this, &Theme::changed);
}

QColor Theme::faded(float opacity) const {
    QColor faded = text();
    faded.setAlphaF(opacity);
    return faded;
}

QColor Theme::cardFill() const {
    return faded(secondaryShare * 0.07F);
}

QColor Theme::cardOutline() const {
    return faded(secondaryShare * 0.2F);
}

QColor Theme::button() const {
    return isDark() ? faded(0.1F) : color(QPalette::Base);
}

QColor Theme::accent() const {
    const QColor fill = accentFill();
    return isDark() ? QColor::fromHslF(std::max(fill.hslHueF(), 0.0F), fill.hslSaturationF(),
                                       std::max(fill.lightnessF(), 0.68F))
                    : QColor::fromHslF(std::max(fill.hslHueF(), 0.0F), fill.hslSaturationF(),
                                       std::min(fill.lightnessF(), 0.4F));
}

QColor Theme::accentFillText() const {
    return color(QPalette::HighlightedText);
}

int Theme::bodySize() {
    return systemSize();
}

int Theme::captionSize() {
    return std::max(smallestCaption, static_cast<int>(std::lround(systemSize() * captionShare)));
}

int Theme::title2Size() {
    return static_cast<int>(std::lround(systemSize() * title2Share));
}

QString Theme::monospaced() {
    return QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
}

QString Theme::family() {
    return QGuiApplication::font().family();
}

}  // namespace tidemark
