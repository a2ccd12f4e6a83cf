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

/// An entry with its child entries, each of which is a variant with another DBusMenuLayout.
struct DBusMenuLayout {
    int id = 0;
    QVariantMap properties;
    QList<QDBusVariant> children;
};

struct DBusMenuProperties {
    int id = 0;
    QVariantMap properties;
};

/// The properties of an entry that have their default values again.
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

/// The bus object of a menu without submenus (com.canonical.dbusmenu protocol). Until setMenu() it has no
/// entries. Even then it is exported, because GNOME's AppIndicator extension does not show an item without a
/// menu; with an empty one, a single click activates the item.
///
/// An entry keeps its id as long as new menus contain its identifier. Panels close, shrink or garble a menu
/// whose layout changes while it is open, and most do not report that it was closed. From the time that a
/// panel asks to show the menu, other entries are therefore published only once the menu is closed or likely
/// to be. Changed texts are published at once.
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
    /// The newest menu, which may not be published yet.
    [[nodiscard]] const Menu& menu() const { return m_menu; }
    /// Sets the function that is called whenever a panel is about to show the menu.
    void setShownHandler(std::function<void()> handler) { m_shownHandler = std::move(handler); }
    /// Whether a panel has announced to show the menu during the last `time`.
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
    /// Part of the protocol. Never emitted, because nothing in the program opens the menu.
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
    /// Whether the published entries are others than those of the menu.
    [[nodiscard]] bool isLayoutStale() const;
    /// Updates the published entries that the menu still has, and reports their changes.
    void updateEntries(const QList<Entry>& entries);
    /// Publishes other entries than before.
    void updateLayout(QList<Entry> entries);
    /// Updates titles with ages. Called only when the menu is about to be shown or read.
    void refreshTitles();
    void tell(const QList<DBusMenuProperties>& updated);
    /// Returns whether the panel has to fetch the layout again.
    bool prepareToShow();
    void onClosed();
    /// Whether a panel probably shows the menu.
    [[nodiscard]] bool isLikelyOpen() const;
    /// Publishes other entries, now or once the menu is closed.
    void updateLayoutWhenClosed();
    /// Runs the action of the entry; false when there is no such entry.
    bool choose(int id);
    [[nodiscard]] QVariantMap rootProperties() const;
    void refuse(const QString& message);

    Menu m_menu;
    QList<Entry> m_entries;
    /// The entries before the last change of the layout.
    QList<Entry> m_withdrawn;
    QHash<QString, int> m_ids;
    uint m_revision = 1;
    bool m_wasRead = false;
    std::function<void()> m_shownHandler;
    QElapsedTimer m_sinceShown;
    /// Runs while a panel shows the menu or may show it.
    QTimer m_open;
    /// Whether the panel reports when the menu is opened and closed.
    bool m_tellsWhenClosed = false;
    /// Runs while other entries wait for the end of a menu whose panel does not report that.
    QTimer m_check;
};

}  // namespace tidemark
