#include "platform/tray/StatusIconFile.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <utility>

#include "platform/tray/StatusIcon.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

/// Trays scale the icon down by half at single scale, and use it as it is at double scale. There is one file
/// and no folder for each size, because GTK does not look for new files in such folders.
constexpr int iconSize = 32;

}  // namespace

StatusIconFile::StatusIconFile()
    : m_folder(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + u"/tidemark-XXXXXX"_s) {}

void StatusIconFile::write(const StatusImage& image, const QColor& dot) {
    const QString name = QFileInfo(m_folder.path()).fileName() + u'-' + QString::number(++m_count);
    if (!drawStatusIcon(image, dot, iconSize).save(pathOf(name), "PNG"))
        return;
    QFile::remove(pathOf(std::exchange(m_formerName, std::exchange(m_name, name))));
}

QString StatusIconFile::pathOf(const QString& name) const {
    return m_folder.filePath(name + u".png"_s);
}

}  // namespace tidemark
