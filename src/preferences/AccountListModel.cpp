#include "preferences/AccountListModel.h"

#include <algorithm>

namespace tidemark {

namespace {

constexpr int cardRole = Qt::UserRole + 1;

}  // namespace

AccountListModel::AccountListModel(const QList<AccountDraft>& drafts) {
    for (const AccountDraft& draft : drafts)
        m_cards.push_back(makeCard(draft));
}

std::unique_ptr<AccountCardModel> AccountListModel::makeCard(const AccountDraft& draft) {
    auto card = std::make_unique<AccountCardModel>(draft);
    for (const auto change : {&AccountCardModel::nameChanged, &AccountCardModel::teamIdChanged,
                              &AccountCardModel::apiTokenChanged})
        connect(card.get(), change, this, &AccountListModel::edited);
    return card;
}

QList<AccountDraft> AccountListModel::drafts() const {
    QList<AccountDraft> drafts;
    for (const auto& card : m_cards)
        drafts.append(card->draft());
    return drafts;
}

void AccountListModel::setErrors(const QHash<QString, QString>& errors) {
    for (const auto& card : m_cards)
        card->setError(errors.value(card->id()));
}

void AccountListModel::append(const AccountDraft& draft) {
    const int row = rowCount();
    beginInsertRows({}, row, row);
    m_cards.push_back(makeCard(draft));
    endInsertRows();
    Q_EMIT edited();
}

void AccountListModel::remove(const QString& id) {
    for (int row = rowCount() - 1; row >= 0; --row) {
        const auto card = m_cards.begin() + row;
        if ((*card)->id() != id)
            continue;
        beginRemoveRows({}, row, row);
        // The view still reads it while it takes it down.
        (*card).release()->deleteLater();
        m_cards.erase(card);
        endRemoveRows();
    }
    Q_EMIT edited();
}

int AccountListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_cards.size());
}

QVariant AccountListModel::data(const QModelIndex& index, int role) const {
    if (role != cardRole || !checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    return QVariant::fromValue(m_cards[static_cast<size_t>(index.row())].get());
}

QHash<int, QByteArray> AccountListModel::roleNames() const {
    return {{cardRole, "card"}};
}

}  // namespace tidemark
