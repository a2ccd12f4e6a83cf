#pragma once

#include <QAbstractListModel>
#include <QHash>
#include <QList>
#include <QString>

namespace tidemark {

/// The ids of a list's rows, in order. Views compute the content of visible rows by id, because an account
/// may have thousands of projects. Changes are applied by difference, so that views keep their place.
class RowListModel final : public QAbstractListModel {
    Q_OBJECT

public:
    struct Entry {
        QString rowId;
        /// The caption under which it stands; empty where a list has none.
        QString section;

        bool operator==(const Entry&) const = default;
        friend size_t qHash(const Entry& entry, size_t seed) {
            return qHashMulti(seed, entry.rowId, entry.section);
        }
    };

    using QAbstractListModel::QAbstractListModel;

    /// No entry may stand there twice.
    void setEntries(const QList<Entry>& entries);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

private:
    enum Role : quint16 { rowIdRole = Qt::UserRole + 1, sectionRole };

    void removeMissing(const QList<Entry>& entries);
    /// The row of an entry at or below `from`, or -1.
    [[nodiscard]] qsizetype indexOf(const Entry& entry, qsizetype from) const;

    QList<Entry> m_entries;
};

}  // namespace tidemark
