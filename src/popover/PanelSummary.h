#pragma once

#include <qqmlintegration.h>

#include <QColor>
#include <QObject>
#include <QString>

#include "state/AppState.h"

namespace tidemark {

/// The summary of all tracked projects, above the deployments list.
struct PanelSummary {
    Q_GADGET
    QML_VALUE_TYPE(panelSummary)
    Q_PROPERTY(QString countText MEMBER countText FINAL)
    Q_PROPERTY(QString badgeText MEMBER badgeText FINAL)
    Q_PROPERTY(QColor badgeColor MEMBER badgeColor FINAL)
    Q_PROPERTY(bool isLoading MEMBER isLoading FINAL)
    Q_PROPERTY(bool isNothingTracked MEMBER isNothingTracked FINAL)
    Q_PROPERTY(bool showsConnectionWarning MEMBER showsConnectionWarning FINAL)
    Q_PROPERTY(QString connectionError MEMBER connectionError FINAL)

public:
    QString countText;
    QString badgeText;
    QColor badgeColor;
    /// The project lists are loading: a spinner stands in place of the list.
    bool isLoading = false;
    bool isNothingTracked = true;
    /// No tracked project could be checked.
    bool showsConnectionWarning = false;
    /// One of the errors.
    QString connectionError;

    bool operator==(const PanelSummary&) const = default;

    [[nodiscard]] static PanelSummary of(const AppState& state);
};

}  // namespace tidemark
