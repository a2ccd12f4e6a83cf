#pragma once

#include <QColor>

namespace tidemark {

/// The colours in which the popover shows states, on its dark background.
class StateColors {
public:
    StateColors() = delete;

    [[nodiscard]] static QColor textDim() { return gray(0.6F); }
    [[nodiscard]] static QColor textFaint() { return gray(0.5F); }
    [[nodiscard]] static QColor dotGreen() { return QColor::fromRgbF(0.133F, 0.773F, 0.369F); }
    [[nodiscard]] static QColor dotAmber() { return QColor::fromRgbF(0.961F, 0.62F, 0.043F); }
    [[nodiscard]] static QColor dotRed() { return QColor::fromRgbF(0.937F, 0.267F, 0.267F); }
    [[nodiscard]] static QColor dotGray() { return gray(0.5F); }
    [[nodiscard]] static QColor live() { return QColor::fromRgbF(0.29F, 0.871F, 0.502F); }
    [[nodiscard]] static QColor building() { return QColor::fromRgbF(0.984F, 0.749F, 0.141F); }
    [[nodiscard]] static QColor error() { return QColor::fromRgbF(0.973F, 0.529F, 0.529F); }

private:
    [[nodiscard]] static QColor gray(float level) { return QColor::fromRgbF(level, level, level); }
};

/// The colour at a part of its opacity.
[[nodiscard]] inline QColor withOpacity(QColor color, float opacity) {
    color.setAlphaF(color.alphaF() * opacity);
    return color;
}

}  // namespace tidemark
