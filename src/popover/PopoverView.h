#pragma once

#include <QBasicTimer>

#include "controls/ViewWindow.h"
#include "popover/PopoverModel.h"

namespace tidemark {

/// The popover's views in a window, as large as their content. Hidden, it takes no time at all; while it is
/// visible it tells the ages anew each minute.
class PopoverView final : public ViewWindow {
    Q_OBJECT

public:
    /// To be called before the application object is made: the views are drawn in software.
    static void prepareApplication();

    /// The model and the engine outlive the view. Views that follow each other share an engine: Qt gives back
    /// everything of a view, but not all of an engine.
    PopoverView(PopoverModel& model, QQmlEngine& engine);

protected:
    bool event(QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    void startMinute();
    void followScreen();
    /// Leaves the content as much height as the screen has, and the window as much as the content wants.
    void fitScreen();

    PopoverModel& m_model;
    QBasicTimer m_minute;
    QMetaObject::Connection m_screenChanges;
};

}  // namespace tidemark
