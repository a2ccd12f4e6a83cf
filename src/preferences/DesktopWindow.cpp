#include "preferences/DesktopWindow.h"

#include <QtQml/qqmlextensionplugin.h>

#include <QCursor>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QScreen>
#include <algorithm>

#include "platform/windows/WindowActivation.h"
#include "preferences/Theme.h"

Q_IMPORT_QML_PLUGIN(Tidemark_PreferencesPlugin)

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

/// What a title bar and a little air take of a screen's height.
constexpr int frameHeight = 48;

QScreen* screenOfUser() {
    QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
    return screen ? screen : QGuiApplication::primaryScreen();
}

}  // namespace

DesktopWindow::DesktopWindow(QQmlEngine& engine, const QString& title, QSize size) : ViewWindow(engine) {
    setTitle(title);
    setFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
             Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    setResizeMode(QQuickView::SizeRootObjectToView);
    setScreen(screenOfUser());
    setGeometry(QRect(screen()->availableGeometry().center(), QSize(1, 1)));
    setFixedSize(size);
    connect(this, &QWindow::visibleChanged, this, [this](bool isVisible) {
        if (!isVisible)
            QMetaObject::invokeMethod(this, &DesktopWindow::closed, Qt::QueuedConnection);
    });
}

void DesktopWindow::setFixedSize(QSize size) {
    const QSize fitting(size.width(),
                        std::min(size.height(), screen()->availableSize().height() - frameHeight));
    if (fitting == this->size())
        return;
    QRect place(QPoint(), fitting);
    place.moveCenter(geometry().center());
    setMinimumSize(fitting);
    setMaximumSize(fitting);
    setGeometry(place);
}

void DesktopWindow::setContent(const QString& view, const QVariantMap& properties) {
    setInitialProperties(properties);
    // The same view again is a new one.
    setSource({});
    setSource(QUrl(u"qrc:/qt/qml/Tidemark/Preferences/%1.qml"_s.arg(view)));
    // The views bring it along.
    m_theme = engine()->singletonInstance<Theme*>(qmlTypeId("Tidemark.Preferences", 1, 0, "Theme"));
    connect(m_theme, &Theme::changed, this, &DesktopWindow::takeColor, Qt::UniqueConnection);
    takeColor();
}

void DesktopWindow::takeColor() {
    setColor(m_theme->window());
}

void DesktopWindow::dropContent() {
    setInitialProperties({});
    setSource({});
    releaseResources();
}

void DesktopWindow::showInBackground() {
    // Qt offers no other way; on X11 it tells the window manager so.
    setProperty("_q_showWithoutActivating", true);
    show();
    setProperty("_q_showWithoutActivating", QVariant());
}

void DesktopWindow::present() {
    if (windowStates().testFlag(Qt::WindowMinimized))
        setWindowStates(windowStates() & ~Qt::WindowMinimized);
    show();
    bringToFront(*this);
}

bool DesktopWindow::event(QEvent* event) {
    // Not every desktop tells of a change of its looks.
    if (event->type() == QEvent::FocusIn && m_theme)
        m_theme->refresh();
    return ViewWindow::event(event);
}

}  // namespace tidemark
