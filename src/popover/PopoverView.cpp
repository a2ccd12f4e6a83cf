#include "popover/PopoverView.h"

#include <QtQml/qqmlextensionplugin.h>

#include <QQuickItem>
#include <QScreen>
#include <QTimerEvent>

#include "popover/DS.h"

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

PopoverView::PopoverView(PopoverModel& model, QQmlEngine& engine) : ViewWindow(engine), m_model(model) {
    setColor(DS::panelBg());
    setTitle(u"Tidemark"_s);
    setResizeMode(QQuickView::SizeViewToRootObject);
    setInitialProperties({{u"popover"_s, QVariant::fromValue(&model)}});
    setSource(QUrl(u"qrc:/qt/qml/Tidemark/Popover/PopoverRootView.qml"_s));
    connect(&model, &PopoverModel::closeRequested, this, &QWindow::close);
    connect(&model, &PopoverModel::activated, this, &PopoverView::fitScreen);
    connect(this, &QWindow::screenChanged, this, &PopoverView::followScreen);
    followScreen();
}

bool PopoverView::event(QEvent* event) {
    switch (event->type()) {
        case QEvent::Show:
            m_model.setActive(true);
            startMinute();
            break;
        case QEvent::Hide: {
            m_minute.stop();
            m_model.setActive(false);
            // Wherever the pointer is when the window comes back, it is not here now.
            QEvent leave(QEvent::Leave);
            ViewWindow::event(&leave);
            break;
        }
        default:
            break;
    }
    return ViewWindow::event(event);
}

void PopoverView::startMinute() {
    constexpr auto minute = std::chrono::milliseconds(1min);
    const auto rest = minute - (m_model.now().time_since_epoch() % minute);
    m_minute.start(static_cast<int>(rest.count()), Qt::PreciseTimer, this);
}

void PopoverView::timerEvent(QTimerEvent* event) {
    if (event->timerId() != m_minute.timerId()) {
        ViewWindow::timerEvent(event);
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
