#pragma once

#include <QColor>
#include <QDBusArgument>
#include <QDBusContext>
#include <QDBusObjectPath>
#include <QObject>
#include <QString>
#include <functional>
#include <memory>

#include "platform/tray/StatusIcon.h"
#include "platform/tray/StatusIconFile.h"
#include "platform/tray/StatusItem.h"
#include "platform/tray/TrayHost.h"

namespace tidemark {

/// The tool tip of the protocol: an icon, which we leave empty, a title and a text.
struct StatusToolTip {
    QString title;
    QString text;
};

QDBusArgument& operator<<(QDBusArgument& argument, const IconPixmap& pixmap);
const QDBusArgument& operator>>(const QDBusArgument& argument, IconPixmap& pixmap);
QDBusArgument& operator<<(QDBusArgument& argument, const StatusToolTip& toolTip);
const QDBusArgument& operator>>(const QDBusArgument& argument, StatusToolTip& toolTip);

/// The bus object of one panel item (StatusNotifierItem protocol, with the label of the Ayatana indicators).
/// Changes within one turn of the event loop are published together, and only if a panel would see a
/// difference. To export it without a menu, export its scriptable properties only.
///
/// It has more than 25 public functions and 15 members because the protocol's methods and properties must be
/// slots and accessors of one object.
class StatusNotifierItem final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category CONSTANT)
    Q_PROPERTY(QString Id READ id CONSTANT)
    Q_PROPERTY(QString Title READ title)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(int WindowId READ windowId CONSTANT)
    Q_PROPERTY(QString IconThemePath READ iconThemePath)
    Q_PROPERTY(QString IconName READ iconName)
    Q_PROPERTY(tidemark::IconPixmaps IconPixmap READ iconPixmap)
    Q_PROPERTY(QString OverlayIconName READ none CONSTANT)
    Q_PROPERTY(QString AttentionIconName READ none CONSTANT)
    Q_PROPERTY(tidemark::StatusToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu)
    Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT SCRIPTABLE false)
    Q_PROPERTY(QString XAyatanaLabel READ label)
    Q_PROPERTY(QString XAyatanaLabelGuide READ label)
    Q_PROPERTY(uint XAyatanaOrderingIndex READ orderingIndex CONSTANT)

public:
    /// The title begins with `applicationName`; the menu is exported at `menuPath` on the same connection.
    StatusNotifierItem(QString applicationName, QString id, const QString& menuPath);

    void setImage(const StatusImage& image);
    void setDot(const QColor& color);
    void setLabel(const QString& label);
    void setToolTip(const QString& toolTip);
    void setAction(StatusItem::Action action) { m_action = std::move(action); }
    /// Whether the item only has a menu. It then refuses `Activate`, and some panels open the menu as a
    /// result. For the others the action has to open it.
    void setItemIsMenu(bool isMenu) { m_itemIsMenu = isMenu; }

    /// Sets the kind of tray. Call before the item is registered there.
    void setHost(TrayHost host);
    /// Runs the action as a click on the item does.
    void runAction(QPoint place);

    /// Sets the function that is called whenever a panel reads the icon.
    void setReadHandler(std::function<void()> handler) { m_readHandler = std::move(handler); }

    [[nodiscard]] QString category() const { return QStringLiteral("ApplicationStatus"); }
    [[nodiscard]] QString id() const { return m_id; }
    [[nodiscard]] QString applicationName() const { return m_applicationName; }
    [[nodiscard]] QString status() const { return QStringLiteral("Active"); }
    [[nodiscard]] int windowId() const { return 0; }
    [[nodiscard]] QString none() const { return {}; }
    [[nodiscard]] bool itemIsMenu() const { return m_itemIsMenu; }
    [[nodiscard]] QDBusObjectPath menu() const { return m_menu; }
    [[nodiscard]] uint orderingIndex() const { return 0; }
    [[nodiscard]] QString title();
    [[nodiscard]] QString label();
    [[nodiscard]] StatusToolTip toolTip();
    [[nodiscard]] IconPixmaps iconPixmap();
    /// Empty for trays that use pixmaps.
    [[nodiscard]] QString iconName();
    [[nodiscard]] QString iconThemePath() const;

public Q_SLOTS:
    void Activate(int x, int y);
    void SecondaryActivate(int x, int y);
    void ContextMenu(int x, int y);
    /// The Ayatana indicators call this on a middle click.
    void XAyatanaSecondaryActivate(uint timestamp);
    void Scroll(int delta, const QString& orientation);
    void ProvideXdgActivationToken(const QString& token);

Q_SIGNALS:
    void NewTitle();
    void NewIcon();
    void NewToolTip();
    /// Part of the protocol. Never emitted, because the status never changes.
    void NewStatus(const QString& status);
    void XAyatanaNewLabel(const QString& label, const QString& guide);

private:
    /// The texts of the item: the title is shown on hover, the label beside the icon by panels that support
    /// it.
    struct Texts {
        QString title;
        QString label;
    };

    [[nodiscard]] Texts texts() const;
    void scheduleUpdate();
    void publish();
    void noteRead();
    void imageChanged();
    void refuseToActivate();

    QString m_applicationName;
    QString m_id;
    QDBusObjectPath m_menu;
    StatusImage m_image;
    QColor m_dot;
    QString m_label;
    QString m_toolTip;
    StatusItem::Action m_action;
    std::function<void()> m_readHandler;
    bool m_itemIsMenu = false;
    Texts m_published;
    IconPixmaps m_pixmaps;
    /// Set for trays that do not use pixmaps.
    std::unique_ptr<StatusIconFile> m_file;
    bool m_isIconStale = true;
    bool m_isFileStale = true;
    bool m_isUpdateScheduled = false;
    bool m_wasRead = false;
};

}  // namespace tidemark
