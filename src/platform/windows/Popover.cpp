#include "platform/windows/Popover.h"

#include <QCursor>
#include <QEvent>
#include <QGuiApplication>
#include <QMetaObject>
#include <QRect>
#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/windows/WindowActivation.h"
#include "platform/x11/PointerPresses.h"
#include "platform/x11/XServer.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

/// How long after the release of the button the panel may take to report the click.
constexpr std::chrono::milliseconds panelDelay(500);
/// The same after the loss of the focus, when no click was seen.
constexpr std::chrono::milliseconds focusDelay(300);
/// A place so near to the origin is relative to the panel's item, or invented.
constexpr QRect localPlaces(-64, -64, 128, 128);

bool canPlaceWindows() {
    return !QGuiApplication::platformName().startsWith("wayland"_L1);
}

/// Keeps tiling compositors from stretching the window: they let it float if it has a minimum size and one
/// fixed extent. Other window managers then show no button to maximise it.
void letFloat(QWindow& window) {
    window.setMinimumSize({window.width(), 1});
    window.setMaximumWidth(window.width());
}

ScreenArea areaOf(const QScreen& screen) {
    QRect available = screen.availableGeometry() & screen.geometry();
    if (const qreal scale = screen.devicePixelRatio(); scale != std::floor(scale)) {
        // Rounding to logical pixels may make the area reach beyond the screen or into a panel.
        available.adjust(0, 0, -1, -1);
    }
    return {screen.geometry(), available.isEmpty() ? screen.geometry() : available};
}

}  // namespace

Popover::Popover(MakeWindow makeWindow, std::chrono::milliseconds lifetimeWhenClosed, QObject* parent)
    : QObject(parent), m_makeWindow(std::move(makeWindow)) {
    m_clickTimer.setSingleShot(true);
    connect(&m_clickTimer, &QTimer::timeout, this, &Popover::endClick);
    m_lifetime.setSingleShot(true);
    m_lifetime.setInterval(lifetimeWhenClosed);
    connect(&m_lifetime, &QTimer::timeout, this, [this] {
        m_window.reset();
        Q_EMIT dropped();
    });
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &Popover::handleFocus);
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, [this](const QScreen* screen) {
        if (m_screen == nullptr || m_screen == screen)
            closeAnchored();
    });
}

Popover::~Popover() {
    // Before the members that the events of the window use.
    m_form = Form::closed;
    m_window.reset();
}

void Popover::toggle(QPoint place) {
    // A press that happened before the panel's call is handled before it.
    if (m_presses)
        m_presses->readPending();
    if (isShown()) {
        close();
    } else if (m_isClosingClick) {
        endClick();
    } else if (canPlaceWindows()) {
        m_server = XServer::connect();
        showAt(anchorFor(place));
    } else {
        showAsWindow();
    }
}

void Popover::showAsWindow() {
    if (isShown()) {
        bringToFront(*m_window);
        return;
    }
    prepareWindow();
    m_window->setFlags(Qt::Window);
    QRect geometry(QPoint(), m_window->size());
    geometry.moveCenter(QGuiApplication::primaryScreen()->availableGeometry().center());
    m_window->setGeometry(geometry);
    letFloat(*m_window);
    show(Form::ordinary);
}

void Popover::close() {
    if (isShown()) {
        hide();
        endClick();
    }
}

void Popover::closeAnchored() {
    if (m_form == Form::anchored)
        close();
}

void Popover::resize(QSize size) {
    if (m_form == Form::anchored)
        m_window->setGeometry(geometryFor(size));
    else if (m_window)
        m_window->resize(size);
}

bool Popover::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_window.get() && isShown()) {
        if (event->type() == QEvent::Resize || event->type() == QEvent::Move)
            place();
    }
    return QObject::eventFilter(watched, event);
}

void Popover::prepareWindow() {
    Q_EMIT aboutToShow();
    if (m_window)
        return;
    m_window = m_makeWindow();
    m_window->setTitle(u"Tidemark"_s);
    m_window->installEventFilter(this);
    // The content or the window manager may close the window, too.
    connect(m_window.get(), &QWindow::visibleChanged, this, [this](bool isVisible) {
        if (!isVisible)
            close();
    });
}

PopoverAnchor Popover::anchorFor(QPoint reported) const {
    QList<QPoint> places;
    // XWayland does not know where the pointer is while that is over a panel.
    if (m_server && !m_server->isXWayland())
        places.append(QCursor::pos());
    if (!localPlaces.contains(reported))
        places.append(reported);
    // Qt lists the primary screen first.
    QList<ScreenArea> screens;
    for (const QScreen* screen : QGuiApplication::screens())
        screens.append(areaOf(*screen));
    return choosePopoverAnchor(
        places, screens, [this](QPoint place) { return m_server ? m_server->panelAt(place) : QRect(); });
}

void Popover::showAt(const PopoverAnchor& anchor) {
    prepareWindow();
    m_anchor = anchor;
    m_screen = QGuiApplication::screenAt(anchor.place);
    // Panels move with the screen's edges, so the place of the click has become meaningless.
    connect(m_screen, &QScreen::geometryChanged, this, &Popover::closeAnchored, Qt::UniqueConnection);
    connect(m_screen, &QScreen::availableGeometryChanged, this, &Popover::place, Qt::UniqueConnection);
    // Task bars do not list tool windows, and tiling window managers let them float.
    m_window->setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    m_window->setScreen(m_screen);
    m_window->setGeometry(geometryFor(m_window->size()));
    show(Form::anchored);
    m_presses = PointerPresses::watch();
    if (m_presses) {
        connect(m_presses.get(), &PointerPresses::pressed, this, &Popover::handlePress);
        connect(m_presses.get(), &PointerPresses::released, this, &Popover::handleRelease);
    }
}

void Popover::show(Form form) {
    m_lifetime.stop();
    endClick();
    m_hadFocus = false;
    m_form = form;
    m_window->show();
    bringToFront(*m_window);
    QMetaObject::invokeMethod(this, &Popover::shown, Qt::QueuedConnection);
}

void Popover::hide() {
    m_form = Form::closed;
    for (QWindow* window : QGuiApplication::topLevelWindows())
        if (isOurs(window))
            window->hide();
    m_server.reset();
    m_lifetime.start();
    QMetaObject::invokeMethod(this, &Popover::closed, Qt::QueuedConnection);
}

void Popover::closeByClick() {
    hide();
    m_isClosingClick = true;
}

void Popover::endClick() {
    m_isClosingClick = false;
    m_clickTimer.stop();
    m_presses.reset();
}

QRect Popover::geometryFor(QSize size) const {
    const QScreen* screen = m_screen != nullptr ? m_screen.data() : QGuiApplication::primaryScreen();
    return placePopover(size, m_anchor, areaOf(*screen));
}

void Popover::place() {
    if (m_form != Form::anchored)
        return;
    const QRect wanted = geometryFor(m_window->size());
    if (wanted.size() != m_window->size())
        m_window->setGeometry(wanted);
    else if (wanted.topLeft() == m_window->position())
        return;
    else if (m_server)
        m_server->move(m_window->winId(), wanted.topLeft());
    else
        m_window->setPosition(wanted.topLeft());
}

bool Popover::isOurs(const QWindow* window) const {
    while (window != nullptr && window != m_window.get())
        window = window->transientParent();
    return window != nullptr;
}

bool Popover::isPointerInside() const {
    QList<WId> windows;
    for (QWindow* window : QGuiApplication::topLevelWindows())
        if (isOurs(window) && window->isVisible())
            windows.append(window->winId());
    return m_server && m_server->isPointerOver(windows);
}

void Popover::handlePress() {
    if (m_isClosingClick) {
        endClick();
    } else if (m_form == Form::anchored && !isPointerInside()) {
        // The delay begins with the release, because the button may be held for any time.
        closeByClick();
    }
}

void Popover::handleRelease() {
    if (m_isClosingClick)
        m_clickTimer.start(panelDelay);
}

void Popover::handleFocus(const QWindow* window) {
    const bool hadFocus = std::exchange(m_hadFocus, isOurs(window));
    if (m_form != Form::anchored || m_hadFocus || !hadFocus)
        return;
    // If a click took the focus, its press came before the loss.
    if (m_presses)
        m_presses->readPending();
    if (m_form == Form::anchored) {
        closeByClick();
        m_clickTimer.start(focusDelay);
    }
}

}  // namespace tidemark
