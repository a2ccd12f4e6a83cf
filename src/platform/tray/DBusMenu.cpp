#include "platform/tray/DBusMenu.h"

#include <QDBusError>
#include <QDBusMetaType>
#include <algorithm>
#include <utility>

#include "platform/base/Characters.h"
#include "platform/x11/PointerGrab.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

using namespace std::chrono_literals;

constexpr int rootId = 0;

/// How long after it was shown a menu is taken to be open at most: with a panel that reports opening and
/// closing, and with one that does not.
constexpr auto longestOpen = 10min;
constexpr auto likelyOpen = 60s;
constexpr auto checkInterval = 1s;

/// Doubles underscores, because a single one marks a mnemonic.
QString labelText(const QString& title) {
    return singleLine(title).replace(u'_', u"__"_s);
}

QVariantMap propertiesOf(const MenuItem& item) {
    if (item.isSeparator)
        return {{u"type"_s, u"separator"_s}};
    QVariantMap properties{{u"label"_s, labelText(item.titleNow())}, {u"enabled"_s, item.isEnabled()}};
    if (!item.keyEquivalent.isNull()) {
        const QList<QStringList> shortcut{{u"Control"_s, QString(item.keyEquivalent)}};
        properties.insert(u"shortcut"_s, QVariant::fromValue(shortcut));
    }
    return properties;
}

/// No names means all properties.
QVariantMap filtered(const QVariantMap& properties, const QStringList& names) {
    if (names.isEmpty())
        return properties;
    QVariantMap wanted;
    for (auto i = properties.cbegin(); i != properties.cend(); ++i)
        if (names.contains(i.key()))
            wanted.insert(i.key(), i.value());
    return wanted;
}

}  // namespace

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuLayout& layout) {
    argument.beginStructure();
    argument << layout.id << layout.properties << layout.children;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuLayout& layout) {
    argument.beginStructure();
    argument >> layout.id >> layout.properties >> layout.children;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuProperties& properties) {
    argument.beginStructure();
    argument << properties.id << properties.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuProperties& properties) {
    argument.beginStructure();
    argument >> properties.id >> properties.properties;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuRemovedProperties& properties) {
    argument.beginStructure();
    argument << properties.id << properties.names;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuRemovedProperties& properties) {
    argument.beginStructure();
    argument >> properties.id >> properties.names;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuEvent& event) {
    argument.beginStructure();
    argument << event.id << event.eventId << event.data << event.timestamp;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuEvent& event) {
    argument.beginStructure();
    argument >> event.id >> event.eventId >> event.data >> event.timestamp;
    argument.endStructure();
    return argument;
}

DBusMenu::DBusMenu() {
    qDBusRegisterMetaType<DBusMenuLayout>();
    qDBusRegisterMetaType<DBusMenuProperties>();
    qDBusRegisterMetaType<QList<DBusMenuProperties>>();
    qDBusRegisterMetaType<DBusMenuRemovedProperties>();
    qDBusRegisterMetaType<QList<DBusMenuRemovedProperties>>();
    qDBusRegisterMetaType<DBusMenuEvent>();
    qDBusRegisterMetaType<QList<DBusMenuEvent>>();
    qDBusRegisterMetaType<QList<QStringList>>();
    m_open.setSingleShot(true);
    connect(&m_open, &QTimer::timeout, this, &DBusMenu::onClosed);
    m_check.setSingleShot(true);
    m_check.setInterval(checkInterval);
    connect(&m_check, &QTimer::timeout, this, &DBusMenu::updateLayoutWhenClosed);
}

void DBusMenu::setMenu(const Menu& menu) {
    m_menu = menu;
    updateEntries(entriesOf(menu));
    if (m_open.isActive())
        refreshTitles();
    updateLayoutWhenClosed();
}

bool DBusMenu::wasShownWithin(std::chrono::milliseconds time) const {
    return m_sinceShown.isValid() && !m_sinceShown.hasExpired(time.count());
}

QList<DBusMenu::Entry> DBusMenu::entriesOf(const Menu& menu) {
    QList<Entry> entries;
    entries.reserve(menu.size());
    for (const MenuItem& item : menu) {
        auto id = m_ids.find(item.identifier);
        if (id == m_ids.end())
            id = m_ids.insert(item.identifier, static_cast<int>(m_ids.size()) + 1);
        entries.append({*id, propertiesOf(item), item});
        // Panels may cache a title with an age, so its published value stays until the next one is published.
        const Entry* told = item.currentTitle ? find(*id) : nullptr;
        if (told)
            entries.last().properties = told->properties;
    }
    return entries;
}

const DBusMenu::Entry* DBusMenu::find(int id, const QList<Entry>& entries) {
    const auto entry = std::ranges::find(entries, id, &Entry::id);
    return entry == entries.cend() ? nullptr : &*entry;
}

bool DBusMenu::isLayoutStale() const {
    return !std::ranges::equal(m_menu, m_entries, {}, &MenuItem::identifier,
                               [](const Entry& entry) { return entry.item.identifier; });
}

void DBusMenu::updateEntries(const QList<Entry>& entries) {
    QList<DBusMenuProperties> updated;
    for (Entry& known : m_entries) {
        const auto entry = std::ranges::find(entries, known.id, &Entry::id);
        if (entry == entries.cend())
            continue;
        const QVariantMap told = std::exchange(known, *entry).properties;
        if (known.properties != told)
            updated.append({known.id, known.properties});
    }
    tell(updated);
}

void DBusMenu::updateLayout(QList<Entry> entries) {
    m_withdrawn = std::exchange(m_entries, std::move(entries));
    ++m_revision;
    if (m_wasRead)
        Q_EMIT LayoutUpdated(m_revision, rootId);
}

void DBusMenu::refreshTitles() {
    QList<DBusMenuProperties> updated;
    for (Entry& entry : m_entries) {
        if (!entry.item.currentTitle)
            continue;
        const QVariantMap told = std::exchange(entry.properties, propertiesOf(entry.item));
        if (entry.properties != told)
            updated.append({entry.id, entry.properties});
    }
    tell(updated);
}

void DBusMenu::tell(const QList<DBusMenuProperties>& updated) {
    // A panel that has not read the menu yet will read all of it.
    if (m_wasRead && !updated.isEmpty())
        Q_EMIT ItemsPropertiesUpdated(updated, {});
}

bool DBusMenu::prepareToShow() {
    const bool isStale = isLayoutStale();
    if (isStale)
        updateLayout(entriesOf(m_menu));
    refreshTitles();
    m_tellsWhenClosed = false;
    m_open.start(likelyOpen);
    m_sinceShown.start();
    if (m_shownHandler)
        m_shownHandler();
    return isStale;
}

void DBusMenu::onClosed() {
    m_open.stop();
    updateLayoutWhenClosed();
}

bool DBusMenu::isLikelyOpen() const {
    if (!m_open.isActive() || m_tellsWhenClosed)
        return m_open.isActive();
    return isPointerGrabbed().value_or(true);
}

void DBusMenu::updateLayoutWhenClosed() {
    if (!isLayoutStale())
        return;
    if (!isLikelyOpen())
        updateLayout(entriesOf(m_menu));
    else if (!m_tellsWhenClosed)
        m_check.start();
}

QVariantMap DBusMenu::rootProperties() const {
    return m_entries.isEmpty() ? QVariantMap() : QVariantMap{{u"children-display"_s, u"submenu"_s}};
}

uint DBusMenu::GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                         DBusMenuLayout& layout) {
    layout = {parentId, {}, {}};
    m_wasRead = true;
    refreshTitles();
    if (parentId == rootId) {
        layout.properties = filtered(rootProperties(), propertyNames);
        if (recursionDepth != 0) {
            for (const Entry& entry : std::as_const(m_entries)) {
                const DBusMenuLayout child{entry.id, filtered(entry.properties, propertyNames), {}};
                layout.children.append(QDBusVariant(QVariant::fromValue(child)));
            }
        }
    } else if (const Entry* entry = find(parentId)) {
        layout.properties = filtered(entry->properties, propertyNames);
    } else {
        refuse(u"no such entry"_s);
    }
    return m_revision;
}

QList<DBusMenuProperties> DBusMenu::GetGroupProperties(const QList<int>& ids,
                                                       const QStringList& propertyNames) {
    m_wasRead = true;
    refreshTitles();
    // No ids means all entries. Unknown ids are omitted from the answer.
    QList<DBusMenuProperties> answer;
    if (ids.isEmpty() || ids.contains(rootId))
        answer.append({rootId, filtered(rootProperties(), propertyNames)});
    for (const Entry& entry : std::as_const(m_entries))
        if (ids.isEmpty() || ids.contains(entry.id))
            answer.append({entry.id, filtered(entry.properties, propertyNames)});
    return answer;
}

QDBusVariant DBusMenu::GetProperty(int id, const QString& name) {
    m_wasRead = true;
    refreshTitles();
    const Entry* entry = find(id);
    const QVariantMap properties = entry ? entry->properties : rootProperties();
    if (!isKnown(id) || !properties.contains(name))
        refuse(u"no such property"_s);
    return QDBusVariant(properties.value(name, QString()));
}

void DBusMenu::Event(int id, const QString& eventId, const QDBusVariant& /*data*/, uint /*timestamp*/) {
    const bool isChosen = eventId == u"clicked" && choose(id);
    if (!isChosen && !isKnown(id)) {
        refuse(u"no such entry"_s);
    } else if (isChosen || (id == rootId && eventId == u"closed")) {
        onClosed();
    } else if (id == rootId && eventId == u"opened") {
        prepareToShow();
        m_tellsWhenClosed = true;
        m_open.start(longestOpen);
    }
}

QList<int> DBusMenu::EventGroup(const QList<DBusMenuEvent>& events) {
    QList<int> unknown;
    for (const DBusMenuEvent& event : events)
        if (isKnown(event.id) || find(event.id, m_withdrawn))
            Event(event.id, event.eventId, event.data, event.timestamp);
        else
            unknown.append(event.id);
    return unknown;
}

bool DBusMenu::AboutToShow(int id) {
    return id == rootId && prepareToShow();
}

QList<int> DBusMenu::AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors) {
    QList<int> stale;
    for (const int id : ids)
        if (!isKnown(id))
            idErrors.append(id);
        else if (AboutToShow(id))
            stale.append(id);
    return stale;
}

bool DBusMenu::choose(int id) {
    // Plasma and LXQt report the choice after they have closed the menu, when it may have other entries
    // already.
    const Entry* entry = find(id) ? find(id) : find(id, m_withdrawn);
    // Queued, so that the panel gets its reply at once and the action may destroy the menu.
    if (entry && entry->item.action)
        QMetaObject::invokeMethod(this, entry->item.action, Qt::QueuedConnection);
    return entry;
}

void DBusMenu::refuse(const QString& message) {
    if (calledFromDBus())
        sendErrorReply(QDBusError::InvalidArgs, message);
}

}  // namespace tidemark
