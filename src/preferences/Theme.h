#pragma once

#include <qqmlintegration.h>

#include <QColor>
#include <QObject>
#include <QString>

#include "platform/windows/Appearance.h"

namespace tidemark {

/// The looks of the program's ordinary windows: the desktop's own colours and fonts. Unlike the popover's
/// palette it follows the desktop from light to dark.
class Theme : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QColor window READ window NOTIFY changed FINAL)
    Q_PROPERTY(QColor text READ text NOTIFY changed FINAL)
    Q_PROPERTY(QColor secondary READ secondary NOTIFY changed FINAL)
    Q_PROPERTY(QColor placeholder READ placeholder NOTIFY changed FINAL)
    Q_PROPERTY(QColor divider READ divider NOTIFY changed FINAL)
    Q_PROPERTY(QColor cardFill READ cardFill NOTIFY changed FINAL)
    Q_PROPERTY(QColor cardOutline READ cardOutline NOTIFY changed FINAL)
    Q_PROPERTY(QColor field READ field NOTIFY changed FINAL)
    Q_PROPERTY(QColor fieldOutline READ fieldOutline NOTIFY changed FINAL)
    Q_PROPERTY(QColor button READ button NOTIFY changed FINAL)
    Q_PROPERTY(QColor accent READ accent NOTIFY changed FINAL)
    Q_PROPERTY(QColor accentFill READ accentFill NOTIFY changed FINAL)
    Q_PROPERTY(QColor accentFillText READ accentFillText NOTIFY changed FINAL)
    Q_PROPERTY(QColor green READ green NOTIFY changed FINAL)
    Q_PROPERTY(QColor red READ red NOTIFY changed FINAL)
    Q_PROPERTY(bool isDark READ isDark NOTIFY changed FINAL)
    Q_PROPERTY(int bodySize READ bodySize NOTIFY changed FINAL)
    Q_PROPERTY(int captionSize READ captionSize NOTIFY changed FINAL)
    Q_PROPERTY(int title2Size READ title2Size NOTIFY changed FINAL)
    Q_PROPERTY(QString monospaced READ monospaced NOTIFY changed FINAL)
    Q_PROPERTY(QString family READ family NOTIFY changed FINAL)

public:
    explicit Theme(QObject* parent = nullptr);

    [[nodiscard]] QColor window() const { return color(QPalette::Window); }
    [[nodiscard]] QColor text() const { return color(QPalette::WindowText); }
    /// Of explanations, captions and what is beside the point.
    [[nodiscard]] QColor secondary() const { return faded(secondaryShare); }
    [[nodiscard]] QColor placeholder() const { return faded(0.45F); }
    [[nodiscard]] QColor divider() const { return faded(0.14F); }
    [[nodiscard]] QColor cardFill() const;
    [[nodiscard]] QColor cardOutline() const;
    [[nodiscard]] QColor field() const { return color(QPalette::Base); }
    [[nodiscard]] QColor fieldOutline() const { return faded(0.28F); }
    [[nodiscard]] QColor button() const;
    /// The accent colour as text on the window: dark or light enough to be read.
    [[nodiscard]] QColor accent() const;
    /// Behind what is chosen, and the text on it.
    [[nodiscard]] QColor accentFill() const { return color(QPalette::Highlight); }
    [[nodiscard]] QColor accentFillText() const;
    [[nodiscard]] QColor green() const {
        return isDark() ? QColor(0x32, 0xd0, 0x5a) : QColor(0x28, 0xb8, 0x4c);
    }
    [[nodiscard]] QColor red() const {
        return isDark() ? QColor(0xff, 0x52, 0x48) : QColor(0xe8, 0x3b, 0x30);
    }
    [[nodiscard]] bool isDark() const { return m_appearance.isDark(); }

    /// Sizes of text in logical pixels, after the desktop's font.
    [[nodiscard]] static int bodySize();
    [[nodiscard]] static int captionSize();
    [[nodiscard]] static int title2Size();
    /// Font families.
    [[nodiscard]] static QString monospaced();
    [[nodiscard]] static QString family();

    /// Looks again at what the desktop's looks are.
    void refresh() { m_appearance.refresh(); }

Q_SIGNALS:
    void changed();

private:
    static constexpr float secondaryShare = 0.66F;

    [[nodiscard]] QColor color(QPalette::ColorRole role) const { return m_appearance.palette().color(role); }
    /// The text's colour at a part of its opacity.
    [[nodiscard]] QColor faded(float opacity) const;

    Appearance m_appearance;
};

}  // namespace tidemark
