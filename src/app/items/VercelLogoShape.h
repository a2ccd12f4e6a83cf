#pragma once

#include "platform/tray/StatusItem.h"

namespace tidemark {

/// The logo: a triangle pointing up.
class VercelLogoShape {
public:
    VercelLogoShape() = delete;

    /// A square template image with this side, in points.
    [[nodiscard]] static StatusImage image(double size);
};

}  // namespace tidemark
