#include "platform/session/DesktopWorkspace.h"

#include <QDesktopServices>
#include <QFileInfo>

#include "platform/base/ActivationToken.h"
#include "platform/base/CoreDumps.h"

namespace tidemark {
namespace {

void launch(const QUrl& url) {
    const coredumps::UserLimit limit;
    QDesktopServices::openUrl(url);
    // The opener has inherited the token, which is good for one activation.
    withdrawActivationToken();
}

}  // namespace

void DesktopWorkspace::openURL(const QUrl& url) {
    if (webAddress(url.toString(QUrl::FullyEncoded)))
        launch(url);
}

void DesktopWorkspace::openFile(const QString& path) {
    const QFileInfo file(path);
    if (file.isFile())
        launch(QUrl::fromLocalFile(file.absoluteFilePath()));
}

}  // namespace tidemark
