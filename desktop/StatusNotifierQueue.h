#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <chrono>
#include <functional>
#include <utility>

namespace tidemark {

/// Lets a program's items register one at a time and a moment apart: of several that come at once XFCE's
/// panel (4.18) makes room for the first only, and the others stay hidden.
class StatusNotifierQueue final : public QObject {
    Q_OBJECT

public:
    explicit StatusNotifierQueue(std::chrono::milliseconds spacing = std::chrono::milliseconds(200));

    /// Runs `step` as soon as it is its turn, which may be now. It is dropped when `owner` goes.
    void enqueue(QObject& owner, std::function<void()> step);

private:
    void runNext();

    QList<std::pair<QPointer<QObject>, std::function<void()>>> m_steps;
    /// Runs for a moment after each step.
    QTimer m_pause;
};

}  // namespace tidemark
