#pragma once

#include <QColor>
#include <QString>

#include "vercel/DeploymentState.h"
#include "vercel/VercelStatusClient.h"

namespace tidemark {

/// The colour of the state in the panel. It has to be legible on light and dark panels, so it is a mid tone.
[[nodiscard]] QColor color(DeploymentState state);

/// An emoji and a word, for menus and notifications.
[[nodiscard]] QString displayLabel(DeploymentState state);

/// How the popover, which is always dark, shows the state of a deployment.
struct StatePresentation {
    QString word;
    QColor wordColor;
    QColor dotColor;
};

[[nodiscard]] StatePresentation presentation(DeploymentState state);

/// How the popover shows the platform's own health: a dot with a tool tip.
struct PlatformPresentation {
    QColor dotColor;
    QString toolTip;
};

[[nodiscard]] PlatformPresentation presentation(VercelStatusLevel level);

}  // namespace tidemark
