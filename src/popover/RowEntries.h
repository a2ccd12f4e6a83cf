#pragma once

#include <QList>
#include <QString>

#include "popover/RowListModel.h"
#include "state/AppState.h"

namespace tidemark {

/// Whether a project of this name stays in a list that is filtered: the filter is empty or stands anywhere in
/// the name, whatever the case by the user's language. Blanks count.
[[nodiscard]] bool matchesFilter(const QString& name, const QString& filter);

/// The tracked projects, in order.
[[nodiscard]] QList<RowListModel::Entry> trackedEntries(const AppState& state);

/// The tracked projects and then the others, each in order and under its caption, as far as they match.
[[nodiscard]] QList<RowListModel::Entry> managedEntries(const AppState& state, const QString& filter);

/// The analytics cards, by the ids of their zones, in order.
[[nodiscard]] QList<RowListModel::Entry> cardEntries(const AppState& state);

}  // namespace tidemark
