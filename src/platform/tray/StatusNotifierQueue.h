#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <functional>

namespace tidemark {

/// Lets a program's items register one at a time: of several that come at once XFCE's panel (4.18) makes room
/// for the first only, and the others stay hidden. The next one's turn comes when the panel has read the last
/// one and been quiet for a moment, or has not read it for a longer one.
class StatusNotifierQueue final : public QObject {
    Q_OBJECT

public:
    StatusNotifierQueue();

    /// The place of one more item among the others.
    [[nodiscard]] int takePlace() { return m_places++; }
    /// Runs `step` when it is its turn: of several, such as after a panel's restart, in the order of their
    /// places, whichever comes first. It is dropped when `owner` goes.
    void enqueue(QObject& owner, int place, std::function<void()> step);
    /// A panel has read an item.
    void noteRead();
    [[nodiscard]] bool hasBeenRead() const { return m_hasBeenRead; }
    /// The last one found no panel to register with.
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
    /// Runs until the next one's turn.
    QTimer m_pause;
    bool m_hasBeenRead = false;
};

}  // namespace tidemark
