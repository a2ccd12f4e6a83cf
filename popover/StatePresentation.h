#pragma once

#include <QColor>
#include <QString>

#include "vercel/DeploymentState.h"
#include "vercel/VercelStatusClient.h"

namespace tidemark {

/// How the popover shows the state of a deployment. The panel's items have colours of their own.
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
