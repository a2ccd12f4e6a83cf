#pragma once

#include <qqmlintegration.h>

#include <QObject>
#include <QString>

#include "updates/Updater.h"

namespace tidemark {

/// What the update window shows of the updater's stage, in words.
class UpdateModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window")
    Q_PROPERTY(QString title READ title NOTIFY changed FINAL)
    Q_PROPERTY(QString detail READ detail NOTIFY changed FINAL)
    Q_PROPERTY(QString notes READ notes NOTIFY changed FINAL)
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY changed FINAL)
    Q_PROPERTY(bool hasProgress READ hasProgress NOTIFY changed FINAL)
    Q_PROPERTY(double progress READ progress NOTIFY changed FINAL)
    Q_PROPERTY(bool canSkip READ canSkip NOTIFY changed FINAL)
    Q_PROPERTY(bool isUnasked READ isUnasked NOTIFY changed FINAL)
    Q_PROPERTY(QString closeLabel READ closeLabel NOTIFY changed FINAL)
    Q_PROPERTY(QString goOnLabel READ goOnLabel NOTIFY changed FINAL)

public:
    /// The updater outlives the model. `version` is that of the running program.
    UpdateModel(Updater& updater, QString version);

    [[nodiscard]] QString title() const;
    [[nodiscard]] QString detail() const;
    /// Of the release that is offered; plain text, empty when there are none.
    [[nodiscard]] QString notes() const;
    /// Something is under way of which nobody knows how long it takes.
    [[nodiscard]] bool isBusy() const;
    [[nodiscard]] bool hasProgress() const;
    /// From 0 to 1.
    [[nodiscard]] double progress() const;
    [[nodiscard]] bool canSkip() const;
    /// The window came by itself: a key that was meant for another one must do nothing here.
    [[nodiscard]] bool isUnasked() const { return m_isUnasked; }
    void setUnasked(bool isUnasked);
    /// Of the button that closes the window, and of the one that goes on; empty where there is nothing to go
    /// on with.
    [[nodiscard]] QString closeLabel() const;
    [[nodiscard]] QString goOnLabel() const;

    Q_INVOKABLE void goOn();
    Q_INVOKABLE void skip();
    Q_INVOKABLE void close();

Q_SIGNALS:
    void changed();
    void closeRequested();

private:
    [[nodiscard]] QString failureTitle() const;
    /// The name of the program with the version of the release.
    [[nodiscard]] QString releaseName() const;

    Updater& m_updater;
    QString m_version;
    bool m_isUnasked = false;
};

}  // namespace tidemark
