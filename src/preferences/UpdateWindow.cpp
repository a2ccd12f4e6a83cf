#include "preferences/UpdateWindow.h"

#include <QVariant>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

constexpr QSize smallSize(420, 150);
constexpr QSize sizeWithNotes(420, 340);

}  // namespace

UpdateWindow::UpdateWindow(Updater& updater, QQmlEngine& engine, const QString& version)
    : m_updater(updater), m_model(updater, version), m_window(engine, u"Tidemark Update"_s, smallSize) {
    connect(&m_model, &UpdateModel::changed, this, &UpdateWindow::follow);
    connect(&m_model, &UpdateModel::closeRequested, &m_window, &QWindow::close);
    connect(&m_window, &DesktopWindow::closed, this, &UpdateWindow::end);
}

UpdateWindow::~UpdateWindow() {
    // While the model is there.
    m_window.dropContent();
}

void UpdateWindow::present() {
    const bool isUnasked = !m_window.isVisible() && m_updater.stage() == Updater::Stage::available;
    m_model.setUnasked(isUnasked);
    if (!m_window.isVisible())
        m_window.setContent(u"UpdateView"_s, {{u"update"_s, QVariant::fromValue(&m_model)}});
    if (isUnasked)
        m_window.showInBackground();
    else
        m_window.present();
}

void UpdateWindow::follow() {
    m_window.setFixedSize(m_model.notes().isEmpty() ? smallSize : sizeWithNotes);
}

void UpdateWindow::end() {
    if (m_window.isVisible())
        return;
    m_window.dropContent();
    m_updater.dismiss();
    Q_EMIT closed();
}

}  // namespace tidemark
