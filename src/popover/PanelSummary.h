#pragma once

#include <QColor>
#include <QObject>
#include <QString>

#include "state/AppState.h"

namespace tidemark {

/// What the deployments panel says of all tracked projects together.
struct PanelSummary {
    Q_GADGET

public:
    /// What stands where the list does.
    enum class Content : quint8 { loading, nothingTracked, list };
    Q_ENUM(Content)

    QString countText;
    QString badgeText;
    QColor badgeColor;
    Content content = Content::nothingTracked;
    /// No tracked project could be checked.
    bool showsConnectionWarning = false;
    /// One of the errors.
    QString connectionError;

    bool operator==(const PanelSummary&) const = default;

    [[nodiscard]] static PanelSummary of(const AppState& state);
};

}  // namespace tidemark
