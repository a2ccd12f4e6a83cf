#pragma once

#include <QDBusArgument>
#include <QDBusContext>
#include <QDBusVariant>
#include <QElapsedTimer>
#include <QHash>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <QVariantMap>
#include <chrono>
#include <functional>

#include "platform/windows/Menu.h"

namespace tidemark {

/// An entry with the entries below it, each of them a variant that holds another one.
struct DBusMenuLayout {
    int id = 0;
    QVariantMap properties;
    QList<QDBusVariant> children;
};

struct DBusMenuProperties {
    int id = 0;
    QVariantMap properties;
};

/// The properties of an entry that went back to their defaults.
struct DBusMenuRemovedProperties {
    int id = 0;
    QStringList names;
};

struct DBusMenuEvent {
    int id = 0;
    QString eventId;
    QDBusVariant data;
    uint timestamp = 0;
};

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuLayout& layout);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuLayout& layout);
QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuProperties& properties);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuProperties& properties);
QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuRemovedProperties& properties);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuRemovedProperties& properties);
QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuEvent& event);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuEvent& event);

/// The bus object of a menu without submenus, after the com.canonical.dbusmenu protocol. It stays a root
/// without entries until it is given some: GNOME's AppIndicator extension does not show an item that has no
/// menu at all, while an empty one makes a single click activate the item.
///
/// An entry keeps its id as long as its identifier comes back. Panels close, shrink or tear a menu whose
/// layout changes while it is open, and most do not say when it is closed: from the moment that a panel asks
/// to show it, a menu with other entries waits until it is closed again or that is likely. A changed text
/// does not.
class DBusMenu final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version CONSTANT)
    Q_PROPERTY(QString TextDirection READ textDirection CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath CONSTANT)

public:
    DBusMenu();

    void setMenu(const Menu& menu);
    /// The newest menu, which may still wait to be told.
    [[nodiscard]] const Menu& menu() const { return m_menu; }
    /// Is called whenever a panel is about to show the menu.
    void setShownHandler(std::function<void()> handler) { m_shownHandler = std::move(handler); }
    /// Whether a panel was about to show it not longer ago than that.
    [[nodiscard]] bool wasShownWithin(std::chrono::milliseconds time) const;

    [[nodiscard]] uint version() const { return 3; }
    [[nodiscard]] QString textDirection() const { return QStringLiteral("ltr"); }
    [[nodiscard]] QString status() const { return QStringLiteral("normal"); }
    [[nodiscard]] QStringList iconThemePath() const { return {}; }

public Q_SLOTS:
    uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                   tidemark::DBusMenuLayout& layout);
    QList<tidemark::DBusMenuProperties> GetGroupProperties(const QList<int>& ids,
                                                           const QStringList& propertyNames);
    QDBusVariant GetProperty(int id, const QString& name);
    void Event(int id, const QString& eventId, const QDBusVariant& data, uint timestamp);
    QList<int> EventGroup(const QList<tidemark::DBusMenuEvent>& events);
    bool AboutToShow(int id);
    QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

Q_SIGNALS:
    void ItemsPropertiesUpdated(const QList<tidemark::DBusMenuProperties>& updated,
                                const QList<tidemark::DBusMenuRemovedProperties>& removed);
    void LayoutUpdated(uint revision, int parent);
    void ItemActivationRequested(int id, uint timestamp);

private:
    struct Entry {
        int id = 0;
        QVariantMap properties;
        MenuItem item;
    };

    [[nodiscard]] QList<Entry> entriesOf(const Menu& menu);
    [[nodiscard]] static const Entry* find(int id, const QList<Entry>& entries);
    [[nodiscard]] const Entry* find(int id) const { return find(id, m_entries); }
    [[nodiscard]] bool isKnown(int id) const { return id == 0 || find(id); }
    /// Whether panels have not been told of all entries yet.
    [[nodiscard]] bool isLayoutStale() const;
    /// Brings the entries that panels know to what they are now.
    void updateEntries(const QList<Entry>& entries);
    /// Tells of other entries than before.
    void updateLayout(QList<Entry> entries);
    /// The titles that age are told only when somebody is about to see them.
    void refreshTitles();
    void tell(const QList<DBusMenuProperties>& updated);
    /// Whether the panel has to fetch the layout again.
    bool prepareToShow();
    void onClosed();
    /// Whether a panel shows the menu, as far as can be told.
    [[nodiscard]] bool isLikelyOpen() const;
    /// Tells of other entries, or waits until nobody sees it.
    void updateLayoutWhenClosed();
    /// Runs what the entry does; false when there is no such entry.
    bool choose(int id);
    [[nodiscard]] QVariantMap rootProperties() const;
    void refuse(const QString& message);

    Menu m_menu;
    QList<Entry> m_entries;
    /// Those before the last change of the layout.
    QList<Entry> m_withdrawn;
    QHash<QString, int> m_ids;
    uint m_revision = 1;
    bool m_wasRead = false;
    std::function<void()> m_shownHandler;
    QElapsedTimer m_sinceShown;
    /// Runs while a panel shows the menu, or may.
    QTimer m_open;
    /// The panel says when the menu is opened and closed.
    bool m_tellsWhenClosed = false;
    /// Runs while other entries wait for a panel that does not.
    QTimer m_check;
};

}  // namespace tidemark
