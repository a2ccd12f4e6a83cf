#include "preferences/UpdateModel.h"

#include <QLocale>
#include <algorithm>
#include <utility>

namespace tidemark {

using namespace Qt::StringLiterals;

using Stage = Updater::Stage;

namespace {

/// How much of a size has come, in one unit.
QString progressText(qint64 received, qint64 total) {
    constexpr qint64 kilo = 1000;
    const bool isLarge = total >= kilo * kilo;
    const double unit = isLarge ? kilo * kilo : kilo;
    const QLocale locale;
    return u"%1 of %2 %3"_s.arg(locale.toString(static_cast<double>(received) / unit, 'f', 1),
                                locale.toString(static_cast<double>(total) / unit, 'f', 1),
                                isLarge ? u"MB"_s : u"kB"_s);
}

}  // namespace

UpdateModel::UpdateModel(Updater& updater, QString version)
    : m_updater(updater), m_version(std::move(version)) {
    connect(&m_updater, &Updater::changed, this, &UpdateModel::changed);
}

QString UpdateModel::releaseName() const {
    const auto& release = m_updater.release();
    return release ? u"Tidemark "_s + release->displayVersion : u"Tidemark"_s;
}

QString UpdateModel::title() const {
    switch (m_updater.stage()) {
        case Stage::idle:
            return {};
        case Stage::checking:
            return u"Checking for updates…"_s;
        case Stage::upToDate:
            return u"Tidemark is up to date"_s;
        case Stage::available:
            return releaseName() + u" is available"_s;
        case Stage::downloading:
            return u"Downloading "_s + releaseName() + u"…"_s;
        case Stage::verifying:
            return u"Installing "_s + releaseName() + u"…"_s;
        case Stage::installed:
            return releaseName() + u" is installed"_s;
        case Stage::handedOver:
            return releaseName() + u" is ready to be installed"_s;
        case Stage::failed:
            return failureTitle();
    }
    Q_UNREACHABLE();
}

QString UpdateModel::failureTitle() const {
    if (m_updater.release())
        return u"The update was not installed"_s;
    switch (m_updater.error()) {
        case UpdateError::feedUnreachable:
        case UpdateError::feedInsecure:
        case UpdateError::feedTooLarge:
        case UpdateError::feedMalformed:
            return u"Could not check for updates"_s;
        default:
            return u"The update cannot be installed"_s;
    }
}

QString UpdateModel::detail() const {
    switch (m_updater.stage()) {
        case Stage::upToDate:
            return u"%1 is the newest version."_s.arg(m_version);
        case Stage::available:
            return u"You have %1."_s.arg(m_version);
        case Stage::downloading:
            return progressText(m_updater.bytesReceived(), m_updater.bytesTotal());
        case Stage::verifying:
            return u"Checking its signature first…"_s;
        case Stage::installed:
            return u"Restart Tidemark to use it."_s;
        case Stage::handedOver:
            return u"It was downloaded, and its signature is right. Install it with the program that has "
                   u"just been opened for it, then restart Tidemark."_s;
        case Stage::failed:
            return m_updater.errorDescription();
        case Stage::idle:
        case Stage::checking:
            return {};
    }
    Q_UNREACHABLE();
}

QString UpdateModel::notes() const {
    return m_updater.stage() == Stage::available && m_updater.release() ? m_updater.release()->notes
                                                                        : QString();
}

bool UpdateModel::isBusy() const {
    return m_updater.stage() == Stage::checking || m_updater.stage() == Stage::verifying;
}

bool UpdateModel::hasProgress() const {
    return m_updater.stage() == Stage::downloading;
}

double UpdateModel::progress() const {
    const auto total = static_cast<double>(std::max(m_updater.bytesTotal(), qint64{1}));
    return std::clamp(static_cast<double>(m_updater.bytesReceived()) / total, 0.0, 1.0);
}

bool UpdateModel::canSkip() const {
    return m_updater.stage() == Stage::available;
}

QString UpdateModel::closeLabel() const {
    switch (m_updater.stage()) {
        case Stage::available:
        case Stage::installed:
            return u"Later"_s;
        case Stage::checking:
        case Stage::downloading:
            return u"Cancel"_s;
        case Stage::verifying:
        case Stage::idle:
        case Stage::upToDate:
        case Stage::handedOver:
        case Stage::failed:
            return u"Close"_s;
    }
    Q_UNREACHABLE();
}

QString UpdateModel::goOnLabel() const {
    switch (m_updater.stage()) {
        case Stage::available:
            return u"Install"_s;
        case Stage::installed:
            return u"Restart Now"_s;
        case Stage::idle:
        case Stage::checking:
        case Stage::upToDate:
        case Stage::downloading:
        case Stage::verifying:
        case Stage::handedOver:
        case Stage::failed:
            return {};
    }
    Q_UNREACHABLE();
}

void UpdateModel::setUnasked(bool isUnasked) {
    m_isUnasked = isUnasked;
    Q_EMIT changed();
}

void UpdateModel::goOn() {
    if (m_updater.stage() == Stage::available)
        m_updater.install();
    else if (m_updater.stage() == Stage::installed)
        m_updater.restart();
}

void UpdateModel::skip() {
    m_updater.skipThisVersion();
    Q_EMIT closeRequested();
}

void UpdateModel::close() {
    Q_EMIT closeRequested();
}

}  // namespace tidemark
