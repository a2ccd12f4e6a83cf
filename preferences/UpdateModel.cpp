#include "preferences/UpdateModel.h"

#include <QLocale>
#include <algorithm>
#include <utility>

namespace tidemark {

using namespace Qt::StringLiterals;

using Stage = Updater::Stage;

namespace {

QString sizeText(qint64 bytes) {
    return QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
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
            return m_updater.release() ? u"The update was not installed"_s : u"Looking for updates failed"_s;
    }
    Q_UNREACHABLE();
}

QString UpdateModel::detail() const {
    switch (m_updater.stage()) {
        case Stage::upToDate:
            return u"%1 is the newest version."_s.arg(m_version);
        case Stage::available:
            return u"You have %1."_s.arg(m_version);
        case Stage::downloading:
            return u"%1 of %2"_s.arg(sizeText(m_updater.bytesReceived()), sizeText(m_updater.bytesTotal()));
        case Stage::verifying:
            return u"Its signature is checked first."_s;
        case Stage::installed:
            return u"It runs from the next start of Tidemark on."_s;
        case Stage::handedOver:
            return u"It was downloaded, and its signature is right. Install it with the program that has "
                   u"just been opened for it, then start Tidemark anew."_s;
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
