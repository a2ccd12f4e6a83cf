#include "updates/AppImage.h"

#include <QFileInfo>

namespace tidemark {

QString runningAppImage(const QString& program) {
    const QFileInfo image(qEnvironmentVariable("APPIMAGE"));
    const QString folder = QFileInfo(qEnvironmentVariable("APPDIR")).canonicalFilePath();
    const bool isOurs = !folder.isEmpty() && QFileInfo(program).canonicalFilePath().startsWith(folder + u'/');
    return isOurs && image.isFile() ? image.absoluteFilePath() : QString();
}

void forgetAppImage() {
    for (const char* name : {"APPIMAGE", "APPDIR", "ARGV0", "OWD"})
        qunsetenv(name);
}

}  // namespace tidemark
