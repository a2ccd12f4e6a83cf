#pragma once

#include <QDate>

#include "sandbox/World.h"
#include "sandbox/http/Exchange.h"

namespace tidemark::sandbox {

/// Answers the traffic service's zones list and its analytics query from a world. The caller locks.
class CloudflareService final {
public:
    explicit CloudflareService(const World& world) : m_world(world) {}

    [[nodiscard]] static bool serves(const QString& path);

    [[nodiscard]] Reply answer(const Request& request) const;

private:
    [[nodiscard]] Reply listZones(const Request& request) const;
    [[nodiscard]] Reply query(const Request& request) const;
    [[nodiscard]] QJsonObject day(const Zone& zone, QDate date) const;

    const World& m_world;
};

}  // namespace tidemark::sandbox
