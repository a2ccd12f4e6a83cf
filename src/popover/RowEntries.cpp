#include "popover/RowEntries.h"

#include <QLocale>
#include <QSet>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

/// The text in a form in which equal letters are equal, whatever their case. The language comes first: a
/// Turkish "I" is a dotless "ı". Folding then unites what has several small forms, as the Greek sigma has.
QString folded(const QString& text) {
    static const QLocale locale = QLocale::system();
    return locale.toLower(text).toCaseFolded().normalized(QString::NormalizationForm_C);
}

bool containsFolded(const QString& name, const QString& foldedFilter) {
    return foldedFilter.isEmpty() || folded(name).contains(foldedFilter);
}

/// A list that names a project twice shows it once.
template <typename Matches>
void appendProjects(QList<RowListModel::Entry>& entries, const AppState& state, const QString& section,
                    Matches matches) {
    QSet<QString> known;
    for (const VercelProject& project : state.allProjects()) {
        if (!matches(project) || known.contains(project.id))
            continue;
        known.insert(project.id);
        entries.append({.rowId = project.id, .section = section});
    }
}

}  // namespace

bool matchesFilter(const QString& name, const QString& filter) {
    return containsFolded(name, folded(filter));
}

QList<RowListModel::Entry> trackedEntries(const AppState& state) {
    QList<RowListModel::Entry> entries;
    appendProjects(entries, state, {}, [&state](const VercelProject& project) {
        return state.trackedIds().contains(project.id);
    });
    return entries;
}

QList<RowListModel::Entry> managedEntries(const AppState& state, const QString& filter) {
    const QString foldedFilter = folded(filter);
    QList<RowListModel::Entry> entries;
    appendProjects(entries, state, u"Tracked"_s, [&](const VercelProject& project) {
        return state.trackedIds().contains(project.id) && containsFolded(project.name, foldedFilter);
    });
    appendProjects(entries, state, u"Ignored / Archived"_s, [&](const VercelProject& project) {
        return !state.trackedIds().contains(project.id) && containsFolded(project.name, foldedFilter);
    });
    return entries;
}

QList<RowListModel::Entry> cardEntries(const AppState& state) {
    QList<RowListModel::Entry> entries;
    QSet<QString> known;
    for (const ZoneAnalytics& card : state.analyticsCards()) {
        if (!known.contains(card.zone.id))
            entries.append({.rowId = card.zone.id, .section = {}});
        known.insert(card.zone.id);
    }
    return entries;
}

}  // namespace tidemark
