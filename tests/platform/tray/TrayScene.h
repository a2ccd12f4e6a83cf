#pragma once

#include <QCoreApplication>
#include <memory>

#include "platform/tray/DBusStatusBar.h"
#include "tests/fakes/DesktopSession.h"
#include "tests/platform/tray/FakeStatusNotifierWatcher.h"

namespace tidemark {

/// A program's status bar with its first item, and a watcher that is not on the bus yet. For a test class to
/// inherit.
class TrayScene {
protected:
    void setUp() {
        m_watcher = std::make_unique<FakeStatusNotifierWatcher>();
        m_bar = std::make_unique<DBusStatusBar>(QStringLiteral("Tidemark"));
        m_service = QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid());
    }

    void tearDown() {
        m_item.reset();
        m_bar.reset();
        m_watcher.reset();
        // Names are released asynchronously, and the next test uses the same ones.
        QTRY_VERIFY(!desktopsession::isOnTheBus(m_service));
        QTRY_VERIFY(!desktopsession::isOnTheBus(desktopsession::watcherName));
    }

    void createItem(const QString& id = QStringLiteral("tidemark")) {
        m_item = m_bar->createStatusItem(id);
        QVERIFY(m_item);
        QTRY_VERIFY(desktopsession::isOnTheBus(m_service));
    }

    std::unique_ptr<FakeStatusNotifierWatcher> m_watcher;
    std::unique_ptr<DBusStatusBar> m_bar;
    std::unique_ptr<StatusItem> m_item;
    QString m_service;
};

}  // namespace tidemark
