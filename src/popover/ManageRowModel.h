#pragma once

#include <qqmlintegration.h>

#include <QObject>

#include "popover/ManageRow.h"
#include "popover/RowContent.h"

namespace tidemark {

/// Gives a view of the manage panel its project, and acts on it.
class ManageRowModel : public tidemark::RowContent {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(tidemark::ManageRow row READ row NOTIFY changed FINAL)

public:
    using RowContent::RowContent;

    [[nodiscard]] const ManageRow& row() const { return m_row; }

    Q_INVOKABLE void toggleTracked();
    Q_INVOKABLE void togglePinned();

protected:
    void refresh() override;

private:
    ManageRow m_row;
};

}  // namespace tidemark
