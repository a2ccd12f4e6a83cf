#pragma once

#include <qqmlintegration.h>

#include <QColor>
#include <QObject>

#include "presentation/StateColors.h"

namespace tidemark {

/// The popover's palette. It is always dark: whites of some opacity and greys lie on `panelBg`.
class DS : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QColor panelBg READ panelBg CONSTANT FINAL)
    Q_PROPERTY(QColor hover READ hover CONSTANT FINAL)
    Q_PROPERTY(QColor searchBg READ searchBg CONSTANT FINAL)
    Q_PROPERTY(QColor border READ border CONSTANT FINAL)
    Q_PROPERTY(QColor borderSoft READ borderSoft CONSTANT FINAL)
    Q_PROPERTY(QColor text READ text CONSTANT FINAL)
    Q_PROPERTY(QColor textMuted READ textMuted CONSTANT FINAL)
    Q_PROPERTY(QColor textDim READ textDim CONSTANT FINAL)
    Q_PROPERTY(QColor textFaint READ textFaint CONSTANT FINAL)
    Q_PROPERTY(QColor dotGreen READ dotGreen CONSTANT FINAL)
    Q_PROPERTY(QColor dotAmber READ dotAmber CONSTANT FINAL)
    Q_PROPERTY(QColor dotRed READ dotRed CONSTANT FINAL)
    Q_PROPERTY(QColor dotGray READ dotGray CONSTANT FINAL)
    Q_PROPERTY(QColor live READ live CONSTANT FINAL)
    Q_PROPERTY(QColor building READ building CONSTANT FINAL)
    Q_PROPERTY(QColor error READ error CONSTANT FINAL)

public:
    /// The background of the whole popover.
    [[nodiscard]] static QColor panelBg() { return gray(0.149F); }
    /// Behind a hovered row and an expanded block.
    [[nodiscard]] static QColor hover() { return white(0.05F); }
    /// Behind the filter field.
    [[nodiscard]] static QColor searchBg() { return white(0.06F); }
    /// The fill of the small chips and buttons in a row.
    [[nodiscard]] static QColor border() { return white(0.12F); }
    /// Dividers and soft outlines.
    [[nodiscard]] static QColor borderSoft() { return white(0.08F); }
    [[nodiscard]] static QColor text() { return gray(1); }
    [[nodiscard]] static QColor textMuted() { return gray(0.75F); }
    /// Captions and section labels.
    [[nodiscard]] static QColor textDim() { return StateColors::textDim(); }
    /// Faint text, icons and placeholders.
    [[nodiscard]] static QColor textFaint() { return StateColors::textFaint(); }
    [[nodiscard]] static QColor dotGreen() { return StateColors::dotGreen(); }
    [[nodiscard]] static QColor dotAmber() { return StateColors::dotAmber(); }
    [[nodiscard]] static QColor dotRed() { return StateColors::dotRed(); }
    [[nodiscard]] static QColor dotGray() { return StateColors::dotGray(); }
    /// The word for a ready deployment, and its badge.
    [[nodiscard]] static QColor live() { return StateColors::live(); }
    /// The word for a deployment in progress, and its badge.
    [[nodiscard]] static QColor building() { return StateColors::building(); }
    /// The word for a failed deployment, and its badge.
    [[nodiscard]] static QColor error() { return StateColors::error(); }

private:
    [[nodiscard]] static QColor gray(float level) { return QColor::fromRgbF(level, level, level); }
    [[nodiscard]] static QColor white(float opacity) { return QColor::fromRgbF(1, 1, 1, opacity); }
};

}  // namespace tidemark
