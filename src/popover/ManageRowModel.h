#pragma once

#include <qqmlintegration.h>

#include <QColor>
#include <QObject>
#include <QString>

#include "popover/RowContent.h"

namespace tidemark {

/// What one project of the manage panel shows and does.
class ManageRowModel : public tidemark::RowContent {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name READ name NOTIFY changed FINAL)
    Q_PROPERTY(QColor dotColor READ dotColor NOTIFY changed FINAL)
    Q_PROPERTY(QString deployedText READ deployedText NOTIFY changed FINAL)
    Q_PROPERTY(bool isTracked READ isTracked NOTIFY changed FINAL)
    Q_PROPERTY(bool isPinned READ isPinned NOTIFY changed FINAL)
    Q_PROPERTY(QString pinToolTip READ pinToolTip NOTIFY changed FINAL)

public:
    using RowContent::RowContent;

    [[nodiscard]] QString name() const { return m_row.name; }
    [[nodiscard]] QColor dotColor() const { return m_row.dotColor; }
    /// Empty without a deployment.
    [[nodiscard]] QString deployedText() const { return m_row.deployedText; }
    [[nodiscard]] bool isTracked() const { return m_row.isTracked; }
    [[nodiscard]] bool isPinned() const { return m_row.isPinned; }
    [[nodiscard]] QString pinToolTip() const;

    Q_INVOKABLE void toggleTracked();
    Q_INVOKABLE void togglePinned();

protected:
    void refresh() override;

private:
    struct Row {
        QString name;
        QColor dotColor;
        QString deployedText;
        bool isTracked = false;
        bool isPinned = false;

        bool operator==(const Row&) const = default;
    };

    [[nodiscard]] Row currentRow() const;

    Row m_row;
};

}  // namespace tidemark
