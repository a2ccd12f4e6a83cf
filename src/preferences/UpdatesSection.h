#pragma once

#include <qqmlintegration.h>

#include <QCoroTask>
#include <QObject>
#include <QString>
#include <stop_token>

#include "notify/UpdateController.h"
#include "platform/base/Clock.h"
#include "platform/base/TaskScope.h"

namespace tidemark {

/// The block of the preferences on updates, as long as it is shown. Its status is that of the moment when it
/// was made, or of a second after a check was asked for.
class UpdatesSection : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window's controller")
    Q_PROPERTY(bool isConfigured READ isConfigured CONSTANT FINAL)
    Q_PROPERTY(QString notConfiguredText READ notConfiguredText CONSTANT FINAL)
    Q_PROPERTY(bool automatic READ automatic WRITE setAutomatic NOTIFY automaticChanged FINAL)
    Q_PROPERTY(bool canCheckNow READ canCheckNow NOTIFY canCheckNowChanged FINAL)
    Q_PROPERTY(QString status READ status NOTIFY statusChanged FINAL)

public:
    /// The controller and the clock outlive the block.
    UpdatesSection(UpdateController& controller, Clock& clock);

    [[nodiscard]] bool isConfigured() const { return m_controller.isConfigured(); }
    [[nodiscard]] static QString notConfiguredText();
    [[nodiscard]] bool automatic() const { return m_automatic; }
    /// Kept by the updater, at once.
    void setAutomatic(bool automatic);
    [[nodiscard]] bool canCheckNow() const;
    [[nodiscard]] QString status() const { return m_status; }

    Q_INVOKABLE void checkNow();

Q_SIGNALS:
    void automaticChanged();
    void canCheckNowChanged();
    void statusChanged();

private:
    [[nodiscard]] QCoro::Task<> refreshStatus(std::stop_token stop);

    UpdateController& m_controller;
    Clock& m_clock;
    bool m_automatic;
    QString m_status;
    /// Last, so that its tasks end first.
    TaskScope m_tasks;
};

}  // namespace tidemark
