#include "popover/PopoverView.h"

#include <QtQml/qqmlextensionplugin.h>

#include <QKeyEvent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QScreen>
#include <QTimerEvent>

#include "popover/DS.h"
#include "popover/Navigation.h"

Q_IMPORT_QML_PLUGIN(Tidemark_ControlsPlugin)
Q_IMPORT_QML_PLUGIN(Tidemark_PopoverPlugin)

namespace tidemark {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Between a popover as high as the screen and the screen's edges, both together.
constexpr int screenMargin = 16;

}  // namespace

void PopoverView::prepareApplication() {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

PopoverView::PopoverView(PopoverModel& model, QQmlEngine& engine)
    : QQuickView(&engine, nullptr), m_model(model) {
    setColor(DS::panelBg());
    setTitle(u"Tidemark"_s);
    setResizeMode(QQuickView::SizeViewToRootObject);
    // Where the module is that its views import.
    engine.addImportPath(u"qrc:/qt/qml"_s);
    setInitialProperties({{u"popover"_s, QVariant::fromValue(&model)}});
    setSource(QUrl(u"qrc:/qt/qml/Tidemark/Popover/PopoverRootView.qml"_s));
    connect(&model, &PopoverModel::closeRequested, this, &QWindow::close);
    connect(&model, &PopoverModel::activated, this, &PopoverView::fitScreen);
    connect(this, &QWindow::screenChanged, this, &PopoverView::followScreen);
    followScreen();
}

bool PopoverView::event(QEvent* event) {
    watchKeyboard(*event);
    switch (event->type()) {
        case QEvent::Show:
            m_model.setActive(true);
            startMinute();
            break;
        case QEvent::Hide: {
            m_minute.stop();
            toolTip().hide();
            m_model.setActive(false);
            // Wherever the pointer is when the window comes back, it is not here now.
            QEvent leave(QEvent::Leave);
            QQuickView::event(&leave);
            break;
        }
        default:
            break;
    }
    return QQuickView::event(event);
}

void PopoverView::watchKeyboard(const QEvent& event) {
    auto* navigation =
        engine()->singletonInstance<Navigation*>(qmlTypeId("Tidemark.Popover", 1, 0, "Navigation"));
    if (!navigation)
        return;
    switch (event.type()) {
        case QEvent::KeyPress:
            toolTip().hide();
            switch (static_cast<const QKeyEvent&>(event).key()) {
                case Qt::Key_Tab:
                case Qt::Key_Backtab:
                case Qt::Key_Up:
                case Qt::Key_Down:
                case Qt::Key_Home:
                case Qt::Key_End:
                case Qt::Key_PageUp:
                case Qt::Key_PageDown:
                    navigation->setByKeyboard(true);
                    break;
                default:
                    break;
            }
            break;
        case QEvent::MouseButtonPress:
            toolTip().hide();
            navigation->setByKeyboard(false);
            break;
        case QEvent::Show:
            navigation->setByKeyboard(false);
            break;
        case QEvent::Wheel:
            toolTip().hide();
            break;
        default:
            break;
    }
}

void PopoverView::startMinute() {
    constexpr auto minute = std::chrono::milliseconds(1min);
    const auto rest = minute - (m_model.now().time_since_epoch() % minute);
    m_minute.start(static_cast<int>(rest.count()), Qt::PreciseTimer, this);
}

void PopoverView::timerEvent(QTimerEvent* event) {
    if (event->timerId() != m_minute.timerId()) {
        QQuickView::timerEvent(event);
        return;
    }
    m_model.refreshAges();
    startMinute();
}

void PopoverView::followScreen() {
    disconnect(m_screenChanges);
    if (screen())
        m_screenChanges =
            connect(screen(), &QScreen::availableGeometryChanged, this, &PopoverView::fitScreen);
    fitScreen();
}

void PopoverView::fitScreen() {
    if (!rootObject() || !screen())
        return;
    rootObject()->setProperty("maximumHeight", screen()->availableSize().height() - screenMargin);
    resize(rootObject()->size().toSize());
}

}  // namespace tidemark
