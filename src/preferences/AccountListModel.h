#pragma once

#include <QAbstractListModel>
#include <QList>
#include <memory>
#include <vector>

#include "preferences/AccountCardModel.h"

namespace tidemark {

/// The drafts of the editor, one card each, in order.
class AccountListModel final : public QAbstractListModel {
    Q_OBJECT

public:
    explicit AccountListModel(const QList<AccountDraft>& drafts);

    [[nodiscard]] QList<AccountDraft> drafts() const;

    /// Why the service refuses accounts' tokens, by account id.
    void setErrors(const QHash<QString, QString>& errors);
    void append(const AccountDraft& draft);
    /// Removes every draft with that id.
    void remove(const QString& id);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    /// Any draft, or which there are.
    void edited();

private:
    [[nodiscard]] std::unique_ptr<AccountCardModel> makeCard(const AccountDraft& draft);

    std::vector<std::unique_ptr<AccountCardModel>> m_cards;
};

}  // namespace tidemark
