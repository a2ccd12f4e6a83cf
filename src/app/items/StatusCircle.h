#pragma once

#include <QColor>
#include <QString>

#include "platform/tray/StatusItem.h"

namespace tidemark {

/// The image of a pinned project: a pill with letters on it.
class StatusCircle {
public:
    StatusCircle() = delete;

    /// An image of 28 by 18 points in its own colours, with the first two characters of `letters` in upper
    /// case.
    [[nodiscard]] static StatusImage makeImage(const QColor& color, const QString& letters);
};

}  // namespace tidemark
