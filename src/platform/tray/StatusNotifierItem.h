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

/// The tool tip as it goes over the bus: an icon that we leave empty, a title and a text.
struct StatusToolTip {
    QString title;
    QString text;
};

QDBusArgument& operator<<(QDBusArgument& argument, const IconPixmap& pixmap);
const QDBusArgument& operator>>(const QDBusArgument& argument, IconPixmap& pixmap);
QDBusArgument& operator<<(QDBusArgument& argument, const StatusToolTip& toolTip);
const QDBusArgument& operator>>(const QDBusArgument& argument, StatusToolTip& toolTip);

/// The bus object of one panel entry, after the StatusNotifierItem protocol with the label of the Ayatana
/// indicators. Changes within one turn of the event loop go out together, and only those that a panel would
/// see. Exported without what is not scriptable, it has no menu.
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
    /// `applicationName` stands in the title; the menu is exported at `menuPath` on the same connection.
    StatusNotifierItem(QString applicationName, QString id, const QString& menuPath);

    void setImage(const StatusImage& image);
    void setDot(const QColor& color);
    void setLabel(const QString& label);
    void setToolTip(const QString& toolTip);
    void setAction(StatusItem::Action action) { m_action = std::move(action); }
    /// The item is its menu and nothing else. It then refuses to be activated, at which some panels open the
    /// menu; `action` has to do it for those that do not.
    void setItemIsMenu(bool isMenu) { m_itemIsMenu = isMenu; }

    /// The tray that will show the item, to be set before it hears of the item.
    void setHost(TrayHost host);
    /// Runs the action as if the item had been clicked on.
    void runAction(QPoint place);

    /// Is called whenever a panel reads the icon.
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
    /// Empty where pixmaps do.
    [[nodiscard]] QString iconName();
    [[nodiscard]] QString iconThemePath() const;

public Q_SLOTS:
    void Activate(int x, int y);
    void SecondaryActivate(int x, int y);
    void ContextMenu(int x, int y);
    /// What the Ayatana indicators call for a middle click.
    void XAyatanaSecondaryActivate(uint timestamp);
    void Scroll(int delta, const QString& orientation);
    void ProvideXdgActivationToken(const QString& token);

Q_SIGNALS:
    void NewTitle();
    void NewIcon();
    void NewToolTip();
    /// Part of the protocol; the status never changes.
    void NewStatus(const QString& status);
    void XAyatanaNewLabel(const QString& label, const QString& guide);

private:
    /// What panels show as text: everywhere on hover, next to the icon on those that can.
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
    /// Where pixmaps do not do.
    std::unique_ptr<StatusIconFile> m_file;
    bool m_isIconStale = true;
    bool m_isFileStale = true;
    bool m_isUpdateScheduled = false;
    bool m_wasRead = false;
};

}  // namespace tidemark
