#pragma once

#include <QJsonObject>

#include "sandbox/World.h"
#include "sandbox/http/Exchange.h"
#include "sandbox/http/Faults.h"
#include "sandbox/http/RequestLog.h"

namespace tidemark::sandbox {

/// The sandbox's own controls under /sandbox, for scripts and for playing by hand. `GET /sandbox` lists them.
/// The caller locks the world.
class ControlService final {
public:
    ControlService(World& world, Faults& faults, RequestLog& log)
        : m_world(world), m_faults(faults), m_log(log) {}

    [[nodiscard]] static bool serves(const QString& path);

    [[nodiscard]] Reply answer(const Request& request);

private:
    [[nodiscard]] Reply showWorld() const;
    [[nodiscard]] Reply showRequests(const Request& request) const;
    [[nodiscard]] Reply showFaults() const;
    [[nodiscard]] Reply addProject(const QJsonObject& wish);
    [[nodiscard]] Reply removeProject(const QJsonObject& wish);
    [[nodiscard]] Reply deploy(const QJsonObject& wish);
    [[nodiscard]] Reply setState(const QJsonObject& wish);
    [[nodiscard]] Reply setStatus(const QJsonObject& wish);
    [[nodiscard]] Reply setSpeed(const QJsonObject& wish);
    [[nodiscard]] Reply setToken(const QJsonObject& wish);
    [[nodiscard]] Reply addFault(const QJsonObject& wish);

    World& m_world;
    Faults& m_faults;
    RequestLog& m_log;
};

}  // namespace tidemark::sandbox
