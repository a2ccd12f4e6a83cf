#pragma once

#include <qqmlintegration.h>
#include <QColor>
#include <QObject>
#include <QString>

#include "popover/PopoverModel.h"

namespace tidemark {

/// What one project of the manage panel shows and does.
class ManageRowModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(
        tidemark::PopoverModel* popover READ popover WRITE setPopover NOTIFY popoverChanged REQUIRED FINAL)
    Q_PROPERTY(QString projectId READ projectId WRITE setProjectId NOTIFY projectIdChanged REQUIRED FINAL)
    Q_PROPERTY(QString name READ name NOTIFY changed FINAL)
    Q_PROPERTY(QColor dotColor READ dotColor NOTIFY changed FINAL)
    Q_PROPERTY(QString deployedText READ deployedText NOTIFY changed FINAL)
    Q_PROPERTY(bool isTracked READ isTracked NOTIFY changed FINAL)
    Q_PROPERTY(bool isPinned READ isPinned NOTIFY changed FINAL)
    Q_PROPERTY(QString pinToolTip READ pinToolTip NOTIFY changed FINAL)

public:
    using QObject::QObject;

    [[nodiscard]] PopoverModel* popover() const { return m_popover; }
    void setPopover(PopoverModel* popover);
    [[nodiscard]] QString projectId() const { return m_projectId; }
    void setProjectId(const QString& projectId);

    [[nodiscard]] QString name() const { return m_row.name; }
    [[nodiscard]] QColor dotColor() const { return m_row.dotColor; }
    /// Empty without a deployment.
    [[nodiscard]] QString deployedText() const { return m_row.deployedText; }
    [[nodiscard]] bool isTracked() const { return m_row.isTracked; }
    [[nodiscard]] bool isPinned() const { return m_row.isPinned; }
    [[nodiscard]] QString pinToolTip() const;

    Q_INVOKABLE void toggleTracked();
    Q_INVOKABLE void togglePinned();

Q_SIGNALS:
    void popoverChanged();
    void projectIdChanged();
    void changed();

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
    void refresh();

    PopoverModel* m_popover = nullptr;
    QString m_projectId;
    Row m_row;
};

}  // namespace tidemark
