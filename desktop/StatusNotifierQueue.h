#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <functional>
#include <utility>

namespace tidemark {

/// Lets a program's items register one at a time: of several that come at once XFCE's panel (4.18) makes room
/// for the first only, and the others stay hidden. The next one's turn comes when the panel has read the last
/// one and been quiet for a moment, or has not read it for a longer one.
class StatusNotifierQueue final : public QObject {
    Q_OBJECT

public:
    StatusNotifierQueue();

    /// Runs `step` as soon as it is its turn, which may be now. It is dropped when `owner` goes.
    void enqueue(QObject& owner, std::function<void()> step);
    /// A panel has read an item.
    void noteRead();
    [[nodiscard]] bool hasBeenRead() const { return m_hasBeenRead; }
    /// The last one found no panel to register with.
    void noteFailure();

private:
    void runNext();

    QList<std::pair<QPointer<QObject>, std::function<void()>>> m_steps;
    /// Runs until the next one's turn.
    QTimer m_pause;
    bool m_hasBeenRead = false;
};

}  // namespace tidemark
