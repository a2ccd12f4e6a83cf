#pragma once

#include <QByteArray>
#include <QHash>

#include "sandbox/World.h"
#include "sandbox/http/Exchange.h"

namespace tidemark::sandbox {

/// Answers the hosting service's REST interface and its status page from a world. The caller locks.
class VercelService final {
public:
    explicit VercelService(World& world) : m_world(world) {}

    [[nodiscard]] static bool serves(const QString& path);

    [[nodiscard]] Reply answer(const Request& request);

    /// Id of the project that the request is about; empty when it is about none or an unknown one.
    [[nodiscard]] QString projectOf(const Request& request) const;

private:
    [[nodiscard]] Reply route(const Request& request, int account);
    [[nodiscard]] Reply listProjects(const Request& request, int account);
    [[nodiscard]] Reply listDeployments(const Request& request, int account) const;
    [[nodiscard]] Reply listDomains(const Request& request, const Project& project) const;
    [[nodiscard]] Reply createDeployment(const Request& request, int account);
    [[nodiscard]] const Project* ownProject(const QString& idOrName, int account) const;
    const QByteArray& rendered(const Project& project);

    World& m_world;
    /// The JSON of each project, by its id. A page of a hundred is then little more than a copy.
    QHash<QString, QByteArray> m_rendered;
};

}  // namespace tidemark::sandbox
