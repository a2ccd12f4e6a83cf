#pragma once

#include <QPointer>
#include <QVariantMap>

#include "controls/ViewWindow.h"

namespace tidemark {

class Theme;

/// An ordinary window of the program: titled, with buttons to close and to minimise it, of a fixed size, in
/// the colours of the desktop. It is centred on the screen when it is
/// made, and reused after it was closed.
class DesktopWindow final : public ViewWindow {
    Q_OBJECT

public:
    /// The engine outlives the window. Where a screen is not as high as that, the window is as high as the
    /// screen.
    DesktopWindow(QQmlEngine& engine, const QString& title, QSize size);

    /// Shows a view of the module in place of what is there.
    void setContent(const QString& view, const QVariantMap& properties);
    /// Destroys what is shown, which takes most of the window's memory.
    void dropContent();

    /// Shows it, if need be, and brings it to the front with the focus.
    void present();

    /// Shows it and leaves the focus where it is.
    void showInBackground();

    /// Changes the size that it has as long as it is not changed again, and keeps its middle where it is.
    void setFixedSize(QSize size);

Q_SIGNALS:
    /// It went, for whatever reason. Comes from the event loop.
    void closed();

protected:
    bool event(QEvent* event) override;

private:
    void takeColor();

    /// Null until there has been content.
    QPointer<Theme> m_theme;
};

}  // namespace tidemark
