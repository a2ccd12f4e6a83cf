#include "platform/tray/StatusNotifierItem.h"

#include <QDBusError>
#include <QDBusMetaType>
#include <utility>

#include "platform/base/ActivationToken.h"
#include "platform/base/Characters.h"

namespace tidemark {

using namespace Qt::StringLiterals;

QDBusArgument& operator<<(QDBusArgument& argument, const IconPixmap& pixmap) {
    argument.beginStructure();
    argument << pixmap.width << pixmap.height << pixmap.bytes;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, IconPixmap& pixmap) {
    argument.beginStructure();
    argument >> pixmap.width >> pixmap.height >> pixmap.bytes;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const StatusToolTip& toolTip) {
    argument.beginStructure();
    argument << QString() << IconPixmaps() << toolTip.title << toolTip.text;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, StatusToolTip& toolTip) {
    QString iconName;
    IconPixmaps icon;
    argument.beginStructure();
    argument >> iconName >> icon >> toolTip.title >> toolTip.text;
    argument.endStructure();
    return argument;
}

StatusNotifierItem::StatusNotifierItem(QString applicationName, QString id, const QString& menuPath)
    : m_applicationName(std::move(applicationName)), m_id(std::move(id)), m_menu(menuPath) {
    qDBusRegisterMetaType<IconPixmap>();
    qDBusRegisterMetaType<IconPixmaps>();
    qDBusRegisterMetaType<StatusToolTip>();
    m_published = texts();
}

void StatusNotifierItem::setImage(const StatusImage& image) {
    m_image = image;
    imageChanged();
    scheduleUpdate();
}

void StatusNotifierItem::setDot(const QColor& color) {
    if (color == m_dot)
        return;
    m_dot = color;
    imageChanged();
    scheduleUpdate();
}

void StatusNotifierItem::setLabel(const QString& label) {
    m_label = label;
    scheduleUpdate();
}

void StatusNotifierItem::setToolTip(const QString& toolTip) {
    m_toolTip = singleLine(toolTip);
    scheduleUpdate();
}

QString StatusNotifierItem::title() {
    m_wasRead = true;
    return texts().title;
}

QString StatusNotifierItem::label() {
    m_wasRead = true;
    return m_label;
}

StatusToolTip StatusNotifierItem::toolTip() {
    return {title(), {}};
}

void StatusNotifierItem::setHost(TrayHost host) {
    if (host != TrayHost::indicators) {
        m_file.reset();
    } else if (!m_file) {
        m_file = std::make_unique<StatusIconFile>();
        m_isFileStale = true;
    }
}

QString StatusNotifierItem::iconName() {
    if (!m_file)
        return {};
    noteRead();
    if (std::exchange(m_isFileStale, false))
        m_file->write(m_image, m_dot);
    return m_file->name();
}

QString StatusNotifierItem::iconThemePath() const {
    return m_file ? m_file->themePath() : QString();
}

IconPixmaps StatusNotifierItem::iconPixmap() {
    noteRead();
    if (m_pixmaps.isEmpty()) {
        m_pixmaps = statusIconPixmaps(m_image, m_dot);
        m_isIconStale = false;
    } else if (m_isIconStale) {
        publish();
    }
    return m_pixmaps;
}

void StatusNotifierItem::Activate(int x, int y) {
    refuseToActivate();
    runAction({x, y});
}

void StatusNotifierItem::SecondaryActivate(int x, int y) {
    if (!m_itemIsMenu)
        runAction({x, y});
}

void StatusNotifierItem::ContextMenu(int x, int y) {
    runAction({x, y});
}

void StatusNotifierItem::XAyatanaSecondaryActivate(uint /*timestamp*/) {
    SecondaryActivate(0, 0);
}

void StatusNotifierItem::Scroll(int /*delta*/, const QString& /*orientation*/) {}

void StatusNotifierItem::ProvideXdgActivationToken(const QString& token) {
    // Qt's Wayland plugin reads the token from the environment when it activates the next window.
    offerActivationToken(token);
}

StatusNotifierItem::Texts StatusNotifierItem::texts() const {
    if (!m_toolTip.isEmpty())
        return {m_toolTip, m_label};
    if (m_label.isEmpty())
        return {m_applicationName, m_label};
    return {m_applicationName + u" — "_s + m_label, m_label};
}

void StatusNotifierItem::scheduleUpdate() {
    if (!std::exchange(m_isUpdateScheduled, true))
        QMetaObject::invokeMethod(this, &StatusNotifierItem::publish, Qt::QueuedConnection);
}

void StatusNotifierItem::publish() {
    m_isUpdateScheduled = false;
    const Texts old = std::exchange(m_published, texts());
    if (!m_wasRead) {
        // No panel has read the item yet, and the first one will read everything.
        return;
    }
    if (m_published.title != old.title) {
        Q_EMIT NewTitle();
        // LXQt shows only the tool tip's title and ignores NewTitle.
        Q_EMIT NewToolTip();
    }
    if (m_published.label != old.label)
        Q_EMIT XAyatanaNewLabel(m_published.label, m_published.label);
    if (std::exchange(m_isIconStale, false) && (m_file || !m_pixmaps.isEmpty())) {
        const IconPixmaps oldPixmaps = std::exchange(m_pixmaps, statusIconPixmaps(m_image, m_dot));
        if (m_pixmaps != oldPixmaps)
            Q_EMIT NewIcon();
    }
}

void StatusNotifierItem::imageChanged() {
    m_isIconStale = true;
    m_isFileStale = true;
}

void StatusNotifierItem::noteRead() {
    m_wasRead = true;
    if (m_readHandler)
        m_readHandler();
}

void StatusNotifierItem::refuseToActivate() {
    // The older indicators that are menus have no such method, so panels expect this error.
    if (m_itemIsMenu && calledFromDBus())
        sendErrorReply(QDBusError::UnknownMethod, u"This item is a menu."_s);
}

void StatusNotifierItem::runAction(QPoint place) {
    // Queued, so that the panel gets its reply at once and the action may destroy the item.
    const auto run = [this, place] {
        if (const StatusItem::Action action = m_action)
            action(place);
    };
    QMetaObject::invokeMethod(this, run, Qt::QueuedConnection);
}

}  // namespace tidemark
