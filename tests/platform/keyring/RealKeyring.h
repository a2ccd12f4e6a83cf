#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <atomic>
#include <functional>

#include "tests/fakes/DesktopSession.h"

namespace tidemark::realkeyring {

using namespace Qt::StringLiterals;

inline const QString serviceName = u"org.freedesktop.secrets"_s;

/// Replaces the program that asks the user for the password of the keyring. The user declines.
class Prompter final : public QDBusVirtualObject {
public:
    std::atomic<int> count = 0;
    /// Called instead of an answer.
    std::function<void()> onPrompt;

    void appear() {
        auto bus = QDBusConnection::sessionBus();
        QVERIFY(bus.registerVirtualObject(u"/org/gnome/keyring/Prompter"_s, this));
        QVERIFY(bus.registerService(u"org.gnome.keyring.SystemPrompter"_s));
    }

    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        const bool isPrompt = message.member() == "BeginPrompting"_L1;
        if (isPrompt)
            ++count;
        if (!onPrompt)
            connection.send(message.createErrorReply(QDBusError::Failed, u"No"_s));
        else if (isPrompt)
            onPrompt();
        return true;
    }
};

/// A secret in the format of the service, in a session without encryption.
struct Secret {
    QDBusObjectPath session;
    QByteArray parameters;
    QByteArray value;
    QString contentType;

    friend QDBusArgument& operator<<(QDBusArgument& argument, const Secret& secret) {
        argument.beginStructure();
        argument << secret.session << secret.parameters << secret.value << secret.contentType;
        argument.endStructure();
        return argument;
    }
    friend const QDBusArgument& operator>>(const QDBusArgument& argument, Secret& secret) {
        argument.beginStructure();
        argument >> secret.session >> secret.parameters >> secret.value >> secret.contentType;
        argument.endStructure();
        return argument;
    }
};

/// The service's answer to a method of its main object.
inline QVariantList callService(const QString& method, const QVariantList& arguments,
                                const QString& interface = u"org.freedesktop.Secret.Service"_s) {
    auto message =
        QDBusMessage::createMethodCall(serviceName, u"/org/freedesktop/secrets"_s, interface, method);
    message.setArguments(arguments);
    return QDBusConnection::sessionBus().call(message).arguments();
}

inline QDBusObjectPath defaultCollection() {
    return callService(u"ReadAlias"_s, {u"default"_s}).value(0).value<QDBusObjectPath>();
}

inline void lock() {
    const QVariant locked =
        callService(u"Lock"_s, {QVariant::fromValue(QList{defaultCollection()})}).value(0);
    QCOMPARE(qdbus_cast<QList<QDBusObjectPath>>(locked).size(), 1);
}

inline bool isLocked() {
    return desktopsession::busProperty(serviceName, defaultCollection().path(),
                                       u"org.freedesktop.Secret.Collection"_s, u"Locked"_s)
        .toBool();
}

/// Does this as if the user had done it in another program.
inline void unlock() {
    qDBusRegisterMetaType<Secret>();
    const QVariant plain = QVariant::fromValue(QDBusVariant(QString()));
    const auto session = callService(u"OpenSession"_s, {u"plain"_s, plain}).value(1).value<QDBusObjectPath>();
    const Secret password{
        .session = session, .parameters = {}, .value = "password", .contentType = u"text/plain"_s};
    callService(u"UnlockWithMasterPassword"_s,
                {QVariant::fromValue(defaultCollection()), QVariant::fromValue(password)},
                u"org.gnome.keyring.InternalUnsupportedGuiltRiddenInterface"_s);
}

/// Starts the session's keyring, unlocked. The first start creates it.
inline void start(QProcess& daemon) {
    daemon.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    daemon.start(u"gnome-keyring-daemon"_s, {u"--unlock"_s, u"--components=secrets"_s, u"--foreground"_s});
    QVERIFY(daemon.waitForStarted(hangLimit));
    daemon.write("password");
    daemon.closeWriteChannel();
    QTRY_VERIFY(desktopsession::isOnTheBus(serviceName));
    QTRY_VERIFY(defaultCollection().path().size() > 1);
}

/// Kills the keyring, so that it cannot clean up.
inline void kill(QProcess& daemon) {
    desktopsession::killAndWait(daemon, serviceName);
}

}  // namespace tidemark::realkeyring

Q_DECLARE_METATYPE(tidemark::realkeyring::Secret)
