#include "platform/windows/WindowActivation.h"

#include <QEvent>
#include <QObject>

#include "platform/base/ActivationToken.h"
#include "platform/x11/XServer.h"

namespace tidemark {
namespace {

void activateByServer(const QWindow& window) {
    if (const auto server = XServer::connect())
        server->activate(window.winId());
}

/// Activates the window once it is exposed, because the window manager does not know it before.
class FirstExposure final : public QObject {
public:
    explicit FirstExposure(QWindow& window) : QObject(&window) { window.installEventFilter(this); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        auto* window = static_cast<QWindow*>(watched);
        if (event->type() == QEvent::Hide) {
            deleteLater();
        } else if (event->type() == QEvent::Expose && window->isExposed()) {
            window->removeEventFilter(this);
            activateByServer(*window);
            deleteLater();
        }
        return false;
    }
};

}  // namespace

void bringToFront(QWindow& window) {
    window.raise();
    window.requestActivate();
    withdrawActivationToken();
    if (window.isExposed())
        activateByServer(window);
    else
        new FirstExposure(window);
}

}  // namespace tidemark
