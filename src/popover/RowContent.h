#pragma once

#include <qqmlintegration.h>

#include <QObject>
#include <QString>

#include "popover/PopoverModel.h"

namespace tidemark {

/// What one row of a list shows. A list has one for each row in sight and gives it another id when the row is
/// used again. It is told when the popover refreshes, and tells the views only of what changed.
class RowContent : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(
        tidemark::PopoverModel* popover READ popover WRITE setPopover NOTIFY popoverChanged REQUIRED FINAL)
    Q_PROPERTY(QString rowId READ rowId WRITE setRowId NOTIFY rowIdChanged REQUIRED FINAL)

public:
    using QObject::QObject;

    [[nodiscard]] PopoverModel* popover() const { return m_popover; }
    void setPopover(PopoverModel* popover);
    /// As in the list's model.
    [[nodiscard]] QString rowId() const { return m_rowId; }
    void setRowId(const QString& rowId);

Q_SIGNALS:
    void popoverChanged();
    void rowIdChanged();
    /// Something that is shown has changed.
    void changed();

protected:
    /// Takes over what the row shows now and tells if it is something else; called with a popover only.
    virtual void refresh() = 0;
    /// The row is used for something else: what was the user's doing is over.
    virtual void startAnew() {}

private:
    PopoverModel* m_popover = nullptr;
    QString m_rowId;
};

}  // namespace tidemark
