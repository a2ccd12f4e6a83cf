#pragma once

#include <QtGlobal>

namespace tidemark::sandbox {

/// Virtual seconds, running `speed` times as fast as the wall clock.
class TimeLine final {
public:
    TimeLine(qint64 wallMs, double speed) : m_wallAnchor(wallMs), m_lastWall(wallMs), m_speed(speed) {}

    [[nodiscard]] double speed() const { return m_speed; }

    /// Virtual time at the last `moveTo`.
    [[nodiscard]] double now() const { return m_now; }

    /// Wall-clock milliseconds at which a virtual moment comes or came; the last `moveTo` while frozen.
    [[nodiscard]] qint64 wallAt(double moment) const;

    /// A clock set back is waited out; more than a virtual day in one step is slept through but for its end.
    void moveTo(qint64 wallMs);

    /// From the last `moveTo` on. 0 freezes.
    void setSpeed(double speed);

private:
    qint64 m_wallAnchor;
    qint64 m_lastWall;
    double m_virtualAnchor = 0;
    double m_now = 0;
    double m_speed;
};

}  // namespace tidemark::sandbox
