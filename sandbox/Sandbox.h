#pragma once

#include <QList>
#include <QString>
#include <QUrl>
#include <memory>
#include <mutex>

#include "sandbox/Records.h"
#include "sandbox/World.h"
#include "sandbox/http/Exchange.h"
#include "sandbox/http/Faults.h"
#include "sandbox/http/RequestLog.h"

namespace tidemark::sandbox {

/// The world, locked for as long as this lives: `sandbox.world()->push(…)` is atomic to the server. Keep it
/// no longer than a statement, or the server waits, and copy what it gives: pointers and references into the
/// world are good under the lock only (in a frozen world, until the next change by hand).
class LockedWorld final {
public:
    LockedWorld(std::recursive_mutex& mutex, World& world) : m_lock(mutex), m_world(world) {}

    [[nodiscard]] World* operator->() const { return &m_world; }
    [[nodiscard]] World& operator*() const { return m_world; }

private:
    std::unique_lock<std::recursive_mutex> m_lock;
    World& m_world;
};

/// A local stand-in for the three web services, on 127.0.0.1 only: the hosting service's REST interface under
/// /v6, /v9 and /v13, its status page under /api/v2, the traffic service under /client/v4; and for the
/// program's own releases under /updates, see `UpdateService`. Its controls are under /sandbox. It serves on
/// a thread of its own; every operation may be called from any thread, `start` and `stop` from one.
class Sandbox final {
public:
    explicit Sandbox(const SandboxOptions& options = {});
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;
    ~Sandbox();

    /// Serves from here on; false when the port is taken.
    [[nodiscard]] bool start();

    /// Closes every connection, also stalled ones, and returns when the thread has ended.
    void stop();

    /// "http://127.0.0.1:port", without a path; empty unless serving. All three services live under it.
    [[nodiscard]] QUrl baseUrl() const;

    [[nodiscard]] QList<SandboxAccount> accounts() const;
    [[nodiscard]] QString cloudflareToken() const;

    /// The feed of a good release, and the key (base64) that it is signed with.
    [[nodiscard]] QUrl updateFeed() const;
    [[nodiscard]] QString updatePublicKey() const;

    /// The world, brought up to now.
    [[nodiscard]] LockedWorld world();
    [[nodiscard]] Faults& faults();
    [[nodiscard]] RequestLog& log();

    /// The server's answer, without any transport.
    [[nodiscard]] Reply answer(const Request& request);

private:
    struct Private;
    std::unique_ptr<Private> m_d;
};

}  // namespace tidemark::sandbox
