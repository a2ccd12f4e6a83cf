#include "sandbox/Sandbox.h"

#include "sandbox/CloudflareService.h"
#include "sandbox/ControlService.h"
#include "sandbox/UpdateService.h"
#include "sandbox/VercelService.h"
#include "sandbox/http/HttpServer.h"

using namespace Qt::StringLiterals;

namespace tidemark::sandbox {

struct Sandbox::Private {
    explicit Private(const SandboxOptions& options) : port(options.port), world(options) {}

    Reply serviceReply(const Request& request);

    int port;
    /// Recursive, because one statement easily takes the world twice.
    std::recursive_mutex mutex;
    World world;
    Faults faults;
    RequestLog log;
    VercelService vercel{world};
    CloudflareService cloudflare{world};
    UpdateService updates;
    ControlService control{world, faults, log};
    /// Last, so that its thread ends before what it uses.
    std::unique_ptr<HttpServer> server;
};

Reply Sandbox::Private::serviceReply(const Request& request) {
    const auto answer = [&] {
        if (VercelService::serves(request.path))
            return vercel.answer(request);
        if (CloudflareService::serves(request.path))
            return cloudflare.answer(request);
        return UpdateService::serves(request.path) ? updates.answer(request) : Reply{.status = 404};
    };
    const std::optional<Fault> fault = faults.take(request.path, vercel.projectOf(request));
    return fault ? deliver(*fault, answer) : answer();
}

Sandbox::Sandbox(const SandboxOptions& options) : m_d(std::make_unique<Private>(options)) {
    m_d->server = std::make_unique<HttpServer>([this](const Request& request) { return answer(request); });
}

Sandbox::~Sandbox() {
    stop();
}

bool Sandbox::start() {
    return m_d->server->start(m_d->port);
}

void Sandbox::stop() {
    m_d->server->stop();
}

QUrl Sandbox::baseUrl() const {
    const int port = m_d->server->port();
    return port == 0 ? QUrl() : QUrl(u"http://127.0.0.1:%1"_s.arg(port));
}

QList<SandboxAccount> Sandbox::accounts() const {
    return m_d->world.accounts();
}

QString Sandbox::cloudflareToken() const {
    return m_d->world.cloudflareToken();
}

QUrl Sandbox::updateFeed() const {
    const QUrl base = baseUrl();
    return base.isEmpty() ? QUrl() : base.resolved(QUrl(u"/updates/appcast.xml"_s));
}

QString Sandbox::updatePublicKey() const {
    return m_d->updates.publicKey();
}

LockedWorld Sandbox::world() {
    LockedWorld locked(m_d->mutex, m_d->world);
    locked->advance();
    return locked;
}

Faults& Sandbox::faults() {
    return m_d->faults;
}

RequestLog& Sandbox::log() {
    return m_d->log;
}

Reply Sandbox::answer(const Request& request) {
    Reply reply;
    LoggedRequest entry{request};
    {
        const std::scoped_lock lock(m_d->mutex);
        m_d->world.advance();
        if (ControlService::serves(request.path))
            return m_d->control.answer(request);
        reply = m_d->serviceReply(request);
        entry.time = m_d->world.now();
        entry.status = reply.status;
    }
    m_d->log.append(entry);
    return reply;
}

}  // namespace tidemark::sandbox
