#include "controls/ViewWindow.h"

#include <QtQml/qqmlextensionplugin.h>

#include <QKeyEvent>
#include <QQmlEngine>

Q_IMPORT_QML_PLUGIN(Tidemark_ControlsPlugin)

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

/// Keys that move the focus. With Alt a letter moves it, too.
bool movesFocus(const QKeyEvent& press) {
    switch (press.key()) {
        case Qt::Key_Tab:
        case Qt::Key_Backtab:
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_Home:
        case Qt::Key_End:
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
            return true;
        default:
            return press.key() != Qt::Key_Alt && press.modifiers() == Qt::AltModifier;
    }
}

}  // namespace

ViewWindow::ViewWindow(QQmlEngine& engine) : QQuickView(&engine, nullptr) {
    // Where the modules are that the views import.
    engine.addImportPath(u"qrc:/qt/qml"_s);
}

bool ViewWindow::event(QEvent* event) {
    watchNavigation(*event);
    switch (event->type()) {
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
            m_toolTip.hide();
            if (static_cast<const QKeyEvent*>(event)->key() == Qt::Key_Alt)
                setAltHeld(event->type() == QEvent::KeyPress);
            break;
        case QEvent::FocusOut:
        case QEvent::Hide:
            m_toolTip.hide();
            setAltHeld(false);
            break;
        case QEvent::MouseButtonPress:
        case QEvent::Wheel:
            m_toolTip.hide();
            break;
        default:
            break;
    }
    return QQuickView::event(event);
}

void ViewWindow::watchNavigation(const QEvent& event) {
    switch (event.type()) {
        case QEvent::KeyPress:
            if (movesFocus(static_cast<const QKeyEvent&>(event)))
                setByKeyboard(true);
            break;
        case QEvent::MouseButtonPress:
        case QEvent::Show:
            setByKeyboard(false);
            break;
        default:
            break;
    }
}

void ViewWindow::setByKeyboard(bool byKeyboard) {
    if (!m_navigation)
        m_navigation =
            engine()->singletonInstance<Navigation*>(qmlTypeId("Tidemark.Controls", 1, 0, "Navigation"));
    if (m_navigation)
        m_navigation->setByKeyboard(byKeyboard);
}

void ViewWindow::setAltHeld(bool isHeld) {
    if (isHeld == m_isAltHeld)
        return;
    m_isAltHeld = isHeld;
    Q_EMIT altHeldChanged();
}

QString ViewWindow::withMnemonic(const QString& label, const QString& letter) {
    const qsizetype place = letter.isEmpty() ? -1 : label.indexOf(letter, 0, Qt::CaseInsensitive);
    return place < 0 ? label.toHtmlEscaped()
                     : label.first(place).toHtmlEscaped() + u"<u>"_s + label.mid(place, 1).toHtmlEscaped() +
                           u"</u>"_s + label.mid(place + 1).toHtmlEscaped();
}

}  // namespace tidemark
