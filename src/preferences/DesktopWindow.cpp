#include "preferences/DesktopWindow.h"

#include <QtQml/qqmlextensionplugin.h>

#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QScreen>
#include <algorithm>

#include "platform/windows/WindowActivation.h"
#include "preferences/TextFieldMenu.h"
#include "preferences/Theme.h"

Q_IMPORT_QML_PLUGIN(Tidemark_ControlsPlugin)
Q_IMPORT_QML_PLUGIN(Tidemark_PreferencesPlugin)

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

/// What a title bar and a little air take of a screen's height.
constexpr int frameHeight = 48;

/// The text field at a place in the scene; null when there is none.
QQuickItem* textFieldAt(QQuickItem& item, QPointF place) {
    if (!item.isVisible() || (item.clip() && !item.contains(item.mapFromScene(place))))
        return nullptr;
    if (isTextField(&item) && item.contains(item.mapFromScene(place)))
        return &item;
    for (QQuickItem* child : item.childItems())
        if (QQuickItem* field = textFieldAt(*child, place))
            return field;
    return nullptr;
}

QScreen* screenOfUser() {
    QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
    return screen ? screen : QGuiApplication::primaryScreen();
}

}  // namespace

DesktopWindow::DesktopWindow(QQmlEngine& engine, const QString& title, QSize size)
    : QQuickView(&engine, nullptr) {
    // Where the modules are that its views import.
    engine.addImportPath(u"qrc:/qt/qml"_s);
    setTitle(title);
    setFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
             Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    setResizeMode(QQuickView::SizeRootObjectToView);
    m_menu.setTransientParent(this);
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

Theme* DesktopWindow::theme() const {
    return engine()->singletonInstance<Theme*>(qmlTypeId("Tidemark.Preferences", 1, 0, "Theme"));
}

void DesktopWindow::setContent(const QString& view, const QVariantMap& properties) {
    setInitialProperties(properties);
    // The same view again is a new one.
    setSource({});
    setSource(QUrl(u"qrc:/qt/qml/Tidemark/Preferences/%1.qml"_s.arg(view)));
    // The views bring it along.
    if (const Theme* looks = theme()) {
        connect(looks, &Theme::changed, this, &DesktopWindow::takeColor, Qt::UniqueConnection);
        takeColor();
    }
}

void DesktopWindow::takeColor() {
    setColor(theme()->window());
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
    watchInput(*event);
    return openFieldMenu(*event) || QQuickView::event(event);
}

bool DesktopWindow::openFieldMenu(const QEvent& event) {
    QQuickItem* field = nullptr;
    QPointF place;
    if (event.type() == QEvent::MouseButtonPress) {
        const auto& press = static_cast<const QMouseEvent&>(event);
        place = press.position();
        field = press.button() == Qt::RightButton ? textFieldAt(*contentItem(), place) : nullptr;
    } else if (event.type() == QEvent::KeyPress) {
        const auto& press = static_cast<const QKeyEvent&>(event);
        const bool asks = press.key() == Qt::Key_Menu ||
                          (press.key() == Qt::Key_F10 && press.modifiers() == Qt::ShiftModifier);
        field = asks && isTextField(activeFocusItem()) ? activeFocusItem() : nullptr;
        place = field ? field->mapToScene(QPointF(0, field->height())) : place;
    }
    if (!field)
        return false;
    field->forceActiveFocus(Qt::PopupFocusReason);
    m_menu.popup(textFieldMenu(field), mapToGlobal(place.toPoint()));
    return true;
}

void DesktopWindow::watchInput(const QEvent& event) {
    Theme* looks = theme();
    if (!looks)
        return;
    switch (event.type()) {
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
            toolTip().hide();
            if (static_cast<const QKeyEvent&>(event).key() == Qt::Key_Alt)
                looks->setShowsMnemonics(event.type() == QEvent::KeyPress);
            break;
        case QEvent::FocusIn:
            looks->refresh();
            break;
        case QEvent::FocusOut:
        case QEvent::Hide:
            toolTip().hide();
            looks->setShowsMnemonics(false);
            break;
        case QEvent::MouseButtonPress:
        case QEvent::Wheel:
            toolTip().hide();
            break;
        default:
            break;
    }
}

}  // namespace tidemark
