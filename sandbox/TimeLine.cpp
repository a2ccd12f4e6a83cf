#include "sandbox/TimeLine.h"

#include <algorithm>
#include <cmath>

namespace tidemark::sandbox {

qint64 TimeLine::wallAt(double moment) const {
    if (m_speed <= 0)
        return m_lastWall;
    return m_wallAnchor + std::llround((moment - m_virtualAnchor) / m_speed * 1000);
}

void TimeLine::moveTo(qint64 wallMs) {
    constexpr double longestStep = 86'400;
    m_lastWall = std::max(m_lastWall, wallMs);
    const double target = m_virtualAnchor + static_cast<double>(m_lastWall - m_wallAnchor) / 1000 * m_speed;
    if (target - m_now > longestStep) {
        m_virtualAnchor = m_now + longestStep;
        m_wallAnchor = m_lastWall;
        m_now = m_virtualAnchor;
        return;
    }
    m_now = std::max(m_now, target);
}

void TimeLine::setSpeed(double speed) {
    m_wallAnchor = m_lastWall;
    m_virtualAnchor = m_now;
    m_speed = std::max(speed, 0.0);
}

}  // namespace tidemark::sandbox
