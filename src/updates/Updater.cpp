#include "updates/Updater.h"

#include <gnu/libc-version.h>

#include <QDateTime>
#include <algorithm>

#include "updates/AppVersion.h"

namespace tidemark {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto automaticKey = "automaticallyChecksForUpdates"_L1;
constexpr auto lastCheckKey = "lastUpdateCheckDate"_L1;
constexpr auto skippedKey = "skippedVersion"_L1;

constexpr qint64 largestFeed = qint64{1024} * 1024;
constexpr auto interval = 24h;
constexpr auto retryAfter = 1h;
/// Not at once, because the login keeps the machine busy.
constexpr auto firstCheckAfter = 20s;
/// Limits how late a change of the wall clock is noticed.
constexpr auto longestSleep = 6h;

bool runsHere(const AppcastItem& release) {
    static const AppVersion library(QString::fromLatin1(gnu_get_libc_version()));
    return release.minimumSystemVersion.isEmpty() || AppVersion(release.minimumSystemVersion) <= library;
}

bool isSecure(const QUrl& url) {
    return url.scheme() == "https"_L1;
}

/// The releases in the answer, or the reason why they cannot be read.
tl::expected<QList<AppcastItem>, UpdateFailure> releases(const HttpResult& answer, const QUrl& feedUrl) {
    using enum UpdateError;
    if (!answer && answer.error() == TransportError::tooLarge)
        return tl::unexpected(UpdateFailure{.error = feedTooLarge});
    if (!answer && answer.error() == TransportError::insecure && !isSecure(feedUrl))
        return tl::unexpected(UpdateFailure{.error = feedInsecure});
    if (!answer)
        return tl::unexpected(UpdateFailure{.error = feedUnreachable, .cause = answer.error()});
    if (answer->status != 200)
        return tl::unexpected(UpdateFailure{.error = feedUnreachable});
    auto items = parseAppcast(answer->body, feedUrl);
    if (!items)
        return tl::unexpected(UpdateFailure{.error = feedMalformed});
    return *std::move(items);
}

}  // namespace

Updater::Updater(Services services)
    : m_services(std::move(services)),
      m_settings(m_services.settingsPath),
      m_installer(m_services.http, m_services.workspace, m_services.installedForm,
                  m_services.bundle.publicKey.toLatin1()) {}

Updater::~Updater() = default;

bool Updater::automaticallyChecksForUpdates() const {
    return !m_settings.value(automaticKey).isValid() || m_settings.boolean(automaticKey);
}

void Updater::setAutomaticallyChecksForUpdates(bool isOn) {
    if (isOn == automaticallyChecksForUpdates())
        return;
    m_settings.setValue(automaticKey, isOn);
    if (!isOn && m_isBusy && m_asker == Asker::schedule)
        endOperation();
    if (m_isStarted)
        startSchedule();
}

std::optional<Clock::TimePoint> Updater::lastUpdateCheckDate() const {
    const QDateTime date =
        QDateTime::fromString(m_settings.value(lastCheckKey).toString(), Qt::ISODateWithMs);
    if (!date.isValid())
        return std::nullopt;
    return Clock::TimePoint(std::chrono::milliseconds(date.toMSecsSinceEpoch()));
}

bool Updater::canCheckForUpdates() const {
    return !m_isBusy;
}

void Updater::start() {
    m_isStarted = true;
    startSchedule();
}

void Updater::startSchedule() {
    m_schedule.requestStop();
    if (automaticallyChecksForUpdates())
        m_schedule = m_tasks.start([this](std::stop_token stop) { return runSchedule(std::move(stop)); });
}

std::chrono::milliseconds Updater::timeUntilDue() const {
    const auto last = lastUpdateCheckDate();
    const auto now = m_services.clock.now();
    // A date in the future comes from a clock that was wrong.
    if (!last || *last > now)
        return 0ms;
    return std::max<std::chrono::milliseconds>(*last + interval - now, 0ms);
}

QCoro::Task<> Updater::runSchedule(std::stop_token stop) {
    co_await m_services.clock.sleep(firstCheckAfter, stop);
    while (!stop.stop_requested()) {
        std::chrono::milliseconds wait = timeUntilDue();
        if (wait == 0ms) {
            wait = retryAfter;
            // A stage that the user may be looking at is not changed.
            const bool isFree =
                m_stage == Stage::idle || m_stage == Stage::upToDate || m_stage == Stage::failed;
            if (!m_isBusy && isFree)
                startCheck(Asker::schedule);
        }
        co_await m_services.clock.sleep(std::min<std::chrono::milliseconds>(wait, longestSleep), stop);
    }
}

void Updater::checkForUpdates() {
    const bool isInstalling = m_stage == Stage::downloading || m_stage == Stage::verifying;
    if (m_isBusy && !isInstalling) {
        // The running check may be a scheduled one, which is not presented.
        m_asker = Asker::user;
        enter(Stage::checking);
    } else if (!m_isBusy && m_stage != Stage::installed) {
        m_release.reset();
        enter(Stage::checking);
        startCheck(Asker::user);
    }
    Q_EMIT presentationRequested();
}

void Updater::startCheck(Asker asker) {
    m_asker = asker;
    setBusy(true);
    m_operation = m_tasks.start([this](std::stop_token stop) { return check(std::move(stop)); });
}

QCoro::Task<> Updater::check(std::stop_token stop) {
    const QUrl feedUrl(m_services.bundle.feedUrl);
    HttpRequest request{.url = feedUrl, .bodyLimit = largestFeed};
    const HttpResult answer = co_await m_services.http.send(std::move(request), stop);
    if (stop.stop_requested())
        co_return;
    const auto items = releases(answer, feedUrl);
    setBusy(false);
    if (!items) {
        fail(items.error());
        co_return;
    }
    const auto now = m_services.clock.now().time_since_epoch().count();
    m_settings.setValue(lastCheckKey,
                        QDateTime::fromMSecsSinceEpoch(now).toUTC().toString(Qt::ISODateWithMs));
    conclude(*items);
}

tl::expected<std::optional<AppcastItem>, UpdateError> Updater::newest(QList<AppcastItem> items) const {
    const AppVersion running(m_services.bundle.version);
    const AppVersion present = m_installed ? std::max(running, AppVersion(m_installed->version)) : running;
    items.removeIf([&](const AppcastItem& item) {
        const AppVersion version(item.version);
        return version <= present || (version.isPreRelease() && !running.isPreRelease());
    });
    if (items.isEmpty())
        return std::nullopt;
    std::ranges::stable_sort(items, std::ranges::greater(),
                             [](const AppcastItem& item) { return AppVersion(item.version); });
    const auto fits = [this](const AppcastItem& item) {
        return runsHere(item) && m_installer.fittingArchive(item);
    };
    const auto found = std::ranges::find_if(items, fits);
    if (found == items.end()) {
        const bool isForNewer = std::ranges::none_of(items, runsHere);
        return tl::unexpected(isForNewer ? UpdateError::needsNewerSystem : UpdateError::noFittingArchive);
    }
    if (const auto refusal = m_installer.refusal(*m_installer.fittingArchive(*found)))
        return tl::unexpected(*refusal);
    return *found;
}

void Updater::conclude(const QList<AppcastItem>& items) {
    const auto release = newest(items);
    if (!release) {
        fail({.error = release.error()});
    } else if (*release) {
        offer(**release);
    } else if (m_asker == Asker::user) {
        m_release = m_installed;
        enter(m_installed ? Stage::installed : Stage::upToDate);
    }
}

void Updater::offer(const AppcastItem& release) {
    const bool isScheduled = m_asker == Asker::schedule;
    if (isScheduled && m_settings.value(skippedKey).toString() == release.version)
        return;
    m_release = release;
    enter(Stage::available);
    if (isScheduled)
        Q_EMIT presentationRequested();
}

void Updater::install() {
    if (m_stage != Stage::available || m_isBusy)
        return;
    m_asker = Asker::user;
    m_bytesReceived = 0;
    m_bytesTotal = m_installer.fittingArchive(*m_release)->length;
    setBusy(true);
    enter(Stage::downloading);
    m_operation =
        m_tasks.start([this](std::stop_token stop) { return installRelease(*m_release, std::move(stop)); });
}

QCoro::Task<> Updater::installRelease(AppcastItem release, std::stop_token stop) {
    UpdateInstaller::Progress progress = [this, stop](UpdateInstaller::Step step, qint64 received) {
        if (!stop.stop_requested())
            showProgress(step, received);
    };
    const auto result = co_await m_installer.install(release, std::move(progress), stop);
    // Also when the user has dismissed it meanwhile.
    if (result == UpdateInstaller::Outcome::installed)
        m_installed = release;
    if (stop.stop_requested())
        co_return;
    setBusy(false);
    if (!result)
        fail(result.error());
    else
        enter(*result == UpdateInstaller::Outcome::installed ? Stage::installed : Stage::handedOver);
}

void Updater::showProgress(UpdateInstaller::Step step, qint64 received) {
    if (step == UpdateInstaller::Step::verifying) {
        m_bytesReceived = received;
        enter(Stage::verifying);
        return;
    }
    // A progress bar has no more than 400 pixels.
    if (received - m_bytesReceived < m_bytesTotal / 400 && received != m_bytesTotal)
        return;
    m_bytesReceived = received;
    Q_EMIT changed();
}

void Updater::skipThisVersion() {
    if (m_stage != Stage::available)
        return;
    m_settings.setValue(skippedKey, m_release->version);
    dismiss();
}

void Updater::dismiss() {
    // A scheduled check goes on, because the user does not see it.
    if (m_isBusy && m_asker == Asker::user)
        endOperation();
    if (m_stage == Stage::idle)
        return;
    m_release.reset();
    enter(Stage::idle);
}

void Updater::restart() {
    if (m_stage == Stage::installed)
        Q_EMIT restartRequested();
}

void Updater::enter(Stage stage) {
    m_stage = stage;
    Q_EMIT changed();
}

void Updater::fail(UpdateFailure failure) {
    if (m_asker == Asker::schedule)
        return;
    m_failure = std::move(failure);
    enter(Stage::failed);
}

void Updater::setBusy(bool isBusy) {
    if (isBusy == m_isBusy)
        return;
    m_isBusy = isBusy;
    Q_EMIT canCheckForUpdatesChanged();
}

void Updater::endOperation() {
    m_operation.requestStop();
    setBusy(false);
}

}  // namespace tidemark
