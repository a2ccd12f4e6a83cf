#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <functional>

namespace tidemark {

/// Lets a program's items register one at a time, because XFCE's panel (4.18) makes room only for the first
/// of several that register together and hides the others. The next item registers 200 ms after the panel's
/// last read of the previous one, or after a second without a read.
class StatusNotifierQueue final : public QObject {
    Q_OBJECT

public:
    StatusNotifierQueue();

    /// The place of a new item, after all others.
    [[nodiscard]] int takePlace() { return m_places++; }
    /// Runs `step` when it is its turn. Waiting steps run in the order of their places, so that items keep
    /// their order when a panel restarts. The step is dropped when `owner` is destroyed.
    void enqueue(QObject& owner, int place, std::function<void()> step);
    /// Call when a panel has read an item.
    void noteRead();
    [[nodiscard]] bool hasBeenRead() const { return m_hasBeenRead; }
    /// Call when the last item found no watcher to register with.
    void noteFailure();

private:
    void runNext();

    struct Step {
        QPointer<QObject> owner;
        int place = 0;
        std::function<void()> run;
    };

    int m_places = 0;
    QList<Step> m_steps;
    /// Runs until the next step may run.
    QTimer m_pause;
    bool m_hasBeenRead = false;
};

}  // namespace tidemark
