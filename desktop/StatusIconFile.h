#pragma once

#include "desktop/StatusItem.h"

#include <QColor>
#include <QString>
#include <QTemporaryDir>

namespace tidemark {

/// A status icon as a file, for trays that find icons by their names. It lies in the user's runtime folder and
/// goes with this.
class StatusIconFile {
public:
    StatusIconFile();

    /// Draws the icon in place of the former one. When it cannot be written, the former one stays.
    void write(const StatusImage& image, const QColor& dot) const;

    /// By which the icon is found below `themePath`; distinct from any other one's.
    [[nodiscard]] QString name() const;
    [[nodiscard]] QString themePath() const { return m_folder.path(); }

private:
    QTemporaryDir m_folder;
};

}  // namespace tidemark
