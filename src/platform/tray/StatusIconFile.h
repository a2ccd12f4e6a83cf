#pragma once

#include <QColor>
#include <QString>
#include <QTemporaryDir>

#include "platform/tray/StatusItem.h"

namespace tidemark {

/// A status icon as a file, for trays that find icons by their names. It lies in the user's runtime folder
/// and goes with this.
class StatusIconFile {
public:
    StatusIconFile();

    /// Draws the icon under another name than before: of a name that it knows, GTK shows the picture that it
    /// has. When it cannot be written, the former one stays.
    void write(const StatusImage& image, const QColor& dot);

    /// By which the icon is found in `themePath`; distinct from any other one's.
    [[nodiscard]] QString name() const { return m_name; }
    [[nodiscard]] QString themePath() const { return m_folder.path(); }

private:
    [[nodiscard]] QString pathOf(const QString& name) const;

    QTemporaryDir m_folder;
    int m_count = 0;
    QString m_name;
    /// Somebody may still be about to read it.
    QString m_formerName;
};

}  // namespace tidemark
