#include "desktop/StatusIconFile.h"

#include "desktop/StatusIcon.h"

#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

namespace tidemark {
namespace {

/// Trays scale it down: to a half at single scale, not at all at double scale. One file and no folder for each
/// size, because GTK does not look into such a folder again.
constexpr int iconSize = 32;

}  // namespace

StatusIconFile::StatusIconFile()
    : m_folder(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) +
               QStringLiteral("/tidemark-XXXXXX")) {}

void StatusIconFile::write(const StatusImage& image, const QColor& dot) const {
    // At once, or a tray reads half a picture.
    QSaveFile file(m_folder.filePath(name() + QStringLiteral(".png")));
    if (file.open(QIODevice::WriteOnly) && drawStatusIcon(image, dot, iconSize).save(&file, "PNG")) {
        file.commit();
    }
}

QString StatusIconFile::name() const {
    return QFileInfo(m_folder.path()).fileName();
}

}  // namespace tidemark
