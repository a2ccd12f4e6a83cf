#pragma once

#include <QPoint>
#include <QRasterWindow>
#include <QSize>
#include <QString>
#include <QTextLayout>

namespace tidemark {

/// A hover text in a small dark window, which may extend beyond the window that it belongs to. It accepts
/// neither clicks nor the focus. The owner decides when and for how long it is shown.
class ToolTipWindow final : public QRasterWindow {
public:
    ToolTipWindow();

    /// Shows the text, without interpreting markup, below the pointer at `place` (in Qt's global
    /// coordinates), or above it where there is no room below. It stays on the screen of `owner` and never
    /// covers `place`. The text replaces the current one; an empty text hides the window.
    ///
    /// Long lines are wrapped. A text of more than 1,000 characters or of more lines than fit half a screen
    /// is elided.
    ///
    /// The window is hidden when `owner` is hidden or destroyed, and not shown for a hidden owner.
    void showText(const QString& text, QPoint place, QWindow* owner);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void follow(QWindow* owner);
    /// The size of the window; no larger than `room`.
    [[nodiscard]] QSize layOut(const QString& text, QSize room);

    QTextLayout m_layout;
    /// Where the layout is drawn.
    QPoint m_origin;
};

}  // namespace tidemark
