#pragma once

#include <qqmlintegration.h>

#include <QAbstractListModel>
#include <QObject>
#include <QString>

#include "popover/ProjectRow.h"
#include "popover/RowContent.h"

namespace tidemark {

/// The older deployments of one project.
class HistoryModel final : public QAbstractListModel {
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    void setEntries(const QList<HistoryEntry>& entries);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

private:
    enum Role : quint16 { dotColorRole = Qt::UserRole + 1, refRole, wordRole, wordColorRole, ageRole };

    QList<HistoryEntry> m_entries;
};

/// What one line of the deployments list shows and does. A list has one for each line in sight and gives it
/// another project when the line is used again.
class ProjectRowModel : public tidemark::RowContent {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name READ name NOTIFY changed FINAL)
    Q_PROPERTY(QColor dotColor READ dotColor NOTIFY changed FINAL)
    Q_PROPERTY(QString word READ word NOTIFY changed FINAL)
    Q_PROPERTY(QColor wordColor READ wordColor NOTIFY changed FINAL)
    Q_PROPERTY(QString domain READ domain NOTIFY changed FINAL)
    Q_PROPERTY(QString domainUrl READ domainUrl NOTIFY changed FINAL)
    Q_PROPERTY(QString summary READ summary NOTIFY changed FINAL)
    Q_PROPERTY(QString placeholder READ placeholder NOTIFY changed FINAL)
    Q_PROPERTY(QString pushedAt READ pushedAt NOTIFY changed FINAL)
    Q_PROPERTY(QString pushedToolTip READ pushedToolTip NOTIFY changed FINAL)
    Q_PROPERTY(QString errorToolTip READ errorToolTip NOTIFY changed FINAL)
    Q_PROPERTY(QString branch READ branch NOTIFY changed FINAL)
    Q_PROPERTY(QString commitMessage READ commitMessage NOTIFY changed FINAL)
    Q_PROPERTY(QString buildDuration READ buildDuration NOTIFY changed FINAL)
    Q_PROPERTY(QString error READ error NOTIFY changed FINAL)
    Q_PROPERTY(QString staleness READ staleness NOTIFY changed FINAL)
    Q_PROPERTY(QString inspectorUrl READ inspectorUrl NOTIFY changed FINAL)
    Q_PROPERTY(QString deploymentUrl READ deploymentUrl NOTIFY changed FINAL)
    Q_PROPERTY(QAbstractItemModel* history READ history CONSTANT FINAL)
    Q_PROPERTY(bool hasHistory READ hasHistory NOTIFY changed FINAL)
    Q_PROPERTY(bool isExpanded READ isExpanded NOTIFY changed FINAL)
    Q_PROPERTY(bool isRedeploying READ isRedeploying NOTIFY changed FINAL)
    Q_PROPERTY(bool canCopy READ canCopy NOTIFY changed FINAL)
    Q_PROPERTY(bool isCopied READ isCopied NOTIFY changed FINAL)
    Q_PROPERTY(QString copyToolTip READ copyToolTip NOTIFY changed FINAL)

public:
    using RowContent::RowContent;

    [[nodiscard]] QString name() const { return m_row.name; }
    [[nodiscard]] QColor dotColor() const { return m_row.dotColor; }
    [[nodiscard]] QString word() const { return m_row.word; }
    [[nodiscard]] QColor wordColor() const { return m_row.wordColor; }
    [[nodiscard]] QString domain() const { return m_row.domain; }
    [[nodiscard]] QString domainUrl() const { return m_row.domainUrl; }
    [[nodiscard]] QString summary() const { return m_row.summary; }
    [[nodiscard]] QString placeholder() const { return m_row.placeholder; }
    [[nodiscard]] QString pushedAt() const { return m_row.pushedAt; }
    [[nodiscard]] QString pushedToolTip() const { return m_row.pushedToolTip; }
    [[nodiscard]] QString errorToolTip() const { return m_row.errorToolTip; }
    [[nodiscard]] QString branch() const { return m_row.branch; }
    [[nodiscard]] QString commitMessage() const { return m_row.commitMessage; }
    [[nodiscard]] QString buildDuration() const { return m_row.buildDuration; }
    [[nodiscard]] QString error() const { return m_row.error; }
    [[nodiscard]] QString staleness() const { return m_row.staleness; }
    [[nodiscard]] QString inspectorUrl() const { return m_row.inspectorUrl; }
    [[nodiscard]] QString deploymentUrl() const { return m_row.deploymentUrl; }
    [[nodiscard]] QAbstractItemModel* history() { return &m_history; }
    [[nodiscard]] bool hasHistory() const { return !m_row.history.isEmpty(); }
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
    HistoryModel m_history;
    bool m_isCopied = false;
};

}  // namespace tidemark
