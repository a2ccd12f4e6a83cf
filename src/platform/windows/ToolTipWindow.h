#pragma once

#include <QPoint>
#include <QRasterWindow>
#include <QSize>
#include <QString>
#include <QTextLayout>

namespace tidemark {

/// A hover text in a small dark window of its own, which may reach beyond the window that it belongs to. It
/// takes neither clicks nor the focus; when and how long it shows is the owner's business.
class ToolTipWindow final : public QRasterWindow {
public:
    ToolTipWindow();

    /// Shows the text, as it is and without any markup, below the pointer at `place` (in Qt's global
    /// coordinates), or above it where there is no room below: always on the screen of `owner`, and not over
    /// the place. A text that shows already gives way to the new one, and an empty one hides the window.
    ///
    /// Long lines are wrapped. More than 1,000 characters, or more lines than half a screen takes, are cut
    /// with an ellipsis.
    ///
    /// The window goes when `owner` is hidden or destroyed, and does not show for a hidden one; hide() hides
    /// it before.
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
