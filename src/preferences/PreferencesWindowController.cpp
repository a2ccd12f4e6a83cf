#include "preferences/PreferencesWindowController.h"

#include <QCoroFuture>
#include <chrono>
#include <utility>

namespace tidemark {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr QSize contentSize(480, 580);
/// Loading takes some milliseconds, unless a keyring waits for its user.
constexpr auto loadingPatience = 300ms;

AppConfiguration defaultConfiguration() {
    // There may be a Cloudflare token all the same. It stays unless another one is typed.
    return {.accounts = {VercelAccount::makeDefault()}, .isCloudflareTokenUnread = true};
}

}  // namespace

PreferencesWindowController::PreferencesWindowController(Services services)
    : m_services(std::move(services)), m_window(m_services.engine, u"Tidemark Preferences"_s, contentSize) {
    m_patience.setSingleShot(true);
    m_patience.setInterval(loadingPatience);
    connect(&m_patience, &QTimer::timeout, this, &PreferencesWindowController::showWaiting);
    connect(&m_window, &DesktopWindow::closed, this, &PreferencesWindowController::dropContent);
}

PreferencesWindowController::~PreferencesWindowController() {
    m_tasks.finish();
    // While the model is there.
    m_window.dropContent();
}

void PreferencesWindowController::showWindow() {
    if (presentEdits())
        return;
    m_patience.start();
    m_tasks.start([this, opening = ++m_opening](std::stop_token) { return loadAndShow(opening); });
}

QCoro::Task<> PreferencesWindowController::loadAndShow(int opening) {
    const QFuture<std::optional<AppConfiguration>> loading = m_services.load();
    const std::optional<AppConfiguration> stored = co_await loading;
    if (opening == m_opening)
        showWindow(stored);
}

void PreferencesWindowController::showWindow(const std::optional<AppConfiguration>& stored) {
    if (presentEdits())
        return;
    ++m_opening;
    m_patience.stop();
    refreshContent(stored);
    m_window.present();
}

void PreferencesWindowController::offerStored(const AppConfiguration& stored) {
    if (isShown() && m_model && !m_model->isEdited())
        refreshContent(stored);
}

void PreferencesWindowController::setAccountErrors(const QHash<QString, QString>& errors) {
    m_accountErrors = errors;
    if (m_model)
        m_model->setAccountErrors(errors);
}

void PreferencesWindowController::close() {
    m_window.close();
}

void PreferencesWindowController::refreshContent(const std::optional<AppConfiguration>& stored) {
    m_window.dropContent();
    m_model = std::make_unique<PreferencesModel>(
        stored.value_or(defaultConfiguration()), m_services.notice(), m_services.makeUpdates(),
        PreferencesModel::Actions{.onSave =
                                      [this](const AppConfiguration& configuration) {
                                          if (onSave)
                                              onSave(configuration);
                                          close();
                                      },
                                  .onCancel = [this] { close(); },
                                  .onOpenVercelTokens = m_services.onOpenVercelTokens,
                                  .onOpenCloudflareTokens = m_services.onOpenCloudflareTokens});
    m_model->setAccountErrors(m_accountErrors);
    m_window.setContent(u"PreferencesView"_s, {{u"preferences"_s, QVariant::fromValue(m_model.get())}});
}

bool PreferencesWindowController::presentEdits() {
    if (!isShown() || !m_model || !m_model->isEdited())
        return false;
    // What is being loaded is of no use any more.
    ++m_opening;
    m_patience.stop();
    m_window.present();
    return true;
}

void PreferencesWindowController::showWaiting() {
    if (presentEdits())
        return;
    m_window.dropContent();
    m_model.reset();
    m_window.setContent(u"WaitingView"_s, {});
    m_window.present();
}

void PreferencesWindowController::dropContent() {
    // It may have been opened again since.
    if (isShown())
        return;
    // Closed while it waits: nobody wants it any more.
    ++m_opening;
    m_patience.stop();
    m_window.dropContent();
    m_model.reset();
    Q_EMIT closed();
}

}  // namespace tidemark
