#pragma once

#include <QColor>
#include <QString>
#include <QTemporaryDir>

#include "platform/tray/StatusItem.h"

namespace tidemark {

/// A status icon as a file, for trays that load icons by name only. It is in the user's runtime folder and
/// removed with this object.
class StatusIconFile {
public:
    StatusIconFile();

    /// Draws the icon into a file with a new name, because GTK caches pictures by name. If the file cannot be
    /// written, the former one stays.
    void write(const StatusImage& image, const QColor& dot);

    /// The icon's unique name in `themePath`.
    [[nodiscard]] QString name() const { return m_name; }
    [[nodiscard]] QString themePath() const { return m_folder.path(); }

private:
    [[nodiscard]] QString pathOf(const QString& name) const;

    QTemporaryDir m_folder;
    int m_count = 0;
    QString m_name;
    /// Kept until the next write, because a panel may be about to read it.
    QString m_formerName;
};

}  // namespace tidemark
