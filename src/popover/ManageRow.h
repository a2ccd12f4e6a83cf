#pragma once

#include <qqmlintegration.h>

#include <QColor>
#include <QObject>
#include <QString>

#include "platform/base/Clock.h"
#include "state/AppState.h"

namespace tidemark {

/// One project of the manage panel.
struct ManageRow {
    Q_GADGET
    QML_VALUE_TYPE(manageRow)
    Q_PROPERTY(QString name MEMBER name FINAL)
    Q_PROPERTY(QColor dotColor MEMBER dotColor FINAL)
    Q_PROPERTY(QString deployedText MEMBER deployedText FINAL)
    Q_PROPERTY(bool isTracked MEMBER isTracked FINAL)
    Q_PROPERTY(bool isPinned MEMBER isPinned FINAL)
    Q_PROPERTY(QString pinToolTip MEMBER pinToolTip FINAL)

public:
    QString name;
    QColor dotColor;
    /// Empty without a deployment.
    QString deployedText;
    bool isTracked = false;
    bool isPinned = false;
    QString pinToolTip;

    bool operator==(const ManageRow&) const = default;

    [[nodiscard]] static ManageRow of(const AppState& state, const QString& projectId, Clock::TimePoint now);
};

}  // namespace tidemark
