#pragma once

#include <qqmlintegration.h>

#include <QObject>
#include <QString>

#include "popover/PopoverModel.h"

namespace tidemark {

/// The content of one row of a list. There is one for each visible row; it gets another id when the row is
/// reused. It follows the popover's refreshes, and emits `changed` only if the row differs.
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
    /// The shown content has changed.
    void changed();

protected:
    /// Computes the row anew and emits `changed` if it differs. Called only while there is a popover.
    virtual void refresh() = 0;
    /// The delegate is reused: resets its transient state (for example "Copied!").
    virtual void startAnew() {}

private:
    PopoverModel* m_popover = nullptr;
    QString m_rowId;
};

}  // namespace tidemark
