#include "preferences/AccountDraft.h"

#include <algorithm>

namespace tidemark {

using namespace Qt::StringLiterals;

QString trimmedSpaces(const QString& text) {
    const auto isKept = [](QChar c) { return c != u'\t' && c.category() != QChar::Separator_Space; };
    const auto first = std::find_if(text.cbegin(), text.cend(), isKept);
    const auto last = std::find_if(text.crbegin(), std::make_reverse_iterator(first), isKept).base();
    return text.mid(first - text.cbegin(), last - first);
}

AccountDraft AccountDraft::makeNew() {
    AccountDraft draft = of(VercelAccount::makeDefault());
    draft.name.clear();
    return draft;
}

AccountDraft AccountDraft::of(const VercelAccount& account) {
    return {.id = account.id,
            .name = account.name,
            .teamId = account.teamId,
            .apiToken = account.apiToken,
            .isTokenUnread = account.isTokenUnread};
}

VercelAccount AccountDraft::asVercelAccount() const {
    const QString trimmedName = trimmedSpaces(name);
    const QString token = trimmedSpaces(apiToken);
    return {.id = id,
            .name = trimmedName.isEmpty() ? u"Account"_s : trimmedName,
            .teamId = trimmedSpaces(teamId),
            .apiToken = token,
            .isTokenUnread = isTokenUnread && token.isEmpty()};
}

}  // namespace tidemark
