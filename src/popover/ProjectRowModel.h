#pragma once

#include <qqmlintegration.h>

#include <QObject>
#include <QString>

#include "popover/ProjectRow.h"
#include "popover/RowContent.h"

namespace tidemark {

/// Gives a view of the deployments list its project, and acts on it.
class ProjectRowModel : public tidemark::RowContent {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(tidemark::ProjectRow row READ row NOTIFY changed FINAL)
    Q_PROPERTY(bool isExpanded READ isExpanded NOTIFY changed FINAL)
    Q_PROPERTY(bool isRedeploying READ isRedeploying NOTIFY changed FINAL)
    Q_PROPERTY(bool canCopy READ canCopy NOTIFY changed FINAL)
    Q_PROPERTY(bool isCopied READ isCopied NOTIFY changed FINAL)
    Q_PROPERTY(QString copyToolTip READ copyToolTip NOTIFY changed FINAL)

public:
    using RowContent::RowContent;

    [[nodiscard]] const ProjectRow& row() const { return m_row; }
    [[nodiscard]] bool isExpanded() const { return popover() && popover()->isExpanded(rowId()); }
    [[nodiscard]] bool isRedeploying() const { return popover() && popover()->isRedeploying(rowId()); }
    [[nodiscard]] bool canCopy() const { return !m_row.domainUrl.isEmpty(); }
    [[nodiscard]] bool isCopied() const { return m_isCopied; }
    [[nodiscard]] QString copyToolTip() const;

    Q_INVOKABLE void toggleExpanded();
    Q_INVOKABLE void redeploy();
    /// Puts the address on the clipboard, which is told for a moment.
    Q_INVOKABLE void copyUrl();

protected:
    void refresh() override;
    void startAnew() override;

private:
    ProjectRow m_row;
    bool m_isCopied = false;
};

}  // namespace tidemark
