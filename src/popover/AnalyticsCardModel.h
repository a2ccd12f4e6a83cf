#pragma once

#include <qqmlintegration.h>

#include <QAbstractListModel>
#include <QObject>
#include <QString>

#include "cloudflare/ZoneAnalytics.h"
#include "popover/RowContent.h"

namespace tidemark {

/// The bars of a week's chart; no more of them than there is room for.
class BarsModel final : public QAbstractListModel {
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    void setDays(const QList<DayStats>& days);
    /// Of the busiest day, in points; 0 without days.
    [[nodiscard]] double highest() const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

private:
    enum Role : quint16 { heightRole = Qt::UserRole + 1, labelRole, dateRole, viewsRole };

    [[nodiscard]] double height(const DayStats& day) const;

    QList<DayStats> m_days;
    qint64 m_busiest = 0;
};

/// What one card of the analytics list shows: a site's traffic.
class AnalyticsCardModel : public tidemark::RowContent {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString projectName READ projectName NOTIFY changed FINAL)
    Q_PROPERTY(QString zoneName READ zoneName NOTIFY changed FINAL)
    Q_PROPERTY(QString views READ views NOTIFY changed FINAL)
    Q_PROPERTY(QString visitors READ visitors NOTIFY changed FINAL)
    Q_PROPERTY(QString requests READ requests NOTIFY changed FINAL)
    Q_PROPERTY(QString bandwidth READ bandwidth NOTIFY changed FINAL)
    Q_PROPERTY(QString threats READ threats NOTIFY changed FINAL)
    Q_PROPERTY(QAbstractItemModel* bars READ bars CONSTANT FINAL)
    Q_PROPERTY(qreal highestBar READ highestBar NOTIFY changed FINAL)
    Q_PROPERTY(bool isExpanded READ isExpanded NOTIFY changed FINAL)

public:
    using RowContent::RowContent;

    [[nodiscard]] QString projectName() const;
    /// The site's domain.
    [[nodiscard]] QString zoneName() const;
    // Totals of the days.
    [[nodiscard]] QString views() const;
    [[nodiscard]] QString visitors() const;
    [[nodiscard]] QString requests() const;
    [[nodiscard]] QString bandwidth() const;
    [[nodiscard]] QString threats() const;
    [[nodiscard]] QAbstractItemModel* bars() { return &m_bars; }
    [[nodiscard]] qreal highestBar() const { return m_bars.highest(); }
    [[nodiscard]] bool isExpanded() const;

    Q_INVOKABLE void toggleExpanded();

protected:
    void refresh() override;

private:
    ZoneAnalytics m_card;
    BarsModel m_bars;
};

}  // namespace tidemark
