#include "platform/http/SystemProxies.h"

#include <proxy.h>

#include <QFuture>
#include <QPromise>
#include <memory>
#include <thread>

#include "platform/http/HttpClient.h"

namespace tidemark {

namespace {

/// After this time another question is worth a thread.
constexpr std::chrono::minutes patience{1};

struct FreeProxies {
    void operator()(pxProxyFactory* factory) const { px_proxy_factory_free(factory); }
    void operator()(char** list) const {
        for (char** item = list; *item != nullptr; ++item)
            std::free(*item);
        std::free(static_cast<void*>(list));
    }
};

/// In the words of libcurl. The proxy resolves the names, because behind a proxy they are often unknown here.
QByteArray curlProxy(const QByteArray& proxy) {
    for (const QByteArray scheme : {"socks://", "socks5://"})
        if (proxy.startsWith(scheme))
            return "socks5h://" + proxy.sliced(scheme.size());
    return proxy == "direct://" ? QByteArray() : proxy;
}

QByteArray originOf(const QUrl& url) {
    QUrl origin;
    origin.setScheme(url.scheme());
    origin.setHost(url.host());
    origin.setPort(url.port());
    origin.setPath(QStringLiteral("/"));
    return origin.toEncoded();
}

}  // namespace

QByteArray SystemProxies::systemProxy(const QByteArray& origin) {
    // A new one each time: it holds memory and a helper process while it lives, and one that waits for a
    // script lets no other question through.
    const std::unique_ptr<pxProxyFactory, FreeProxies> factory(px_proxy_factory_new());
    if (!factory)
        return {};
    const std::unique_ptr<char*, FreeProxies> proxies(
        px_proxy_factory_get_proxies(factory.get(), origin.data()));
    return proxies && *proxies ? curlProxy(*proxies) : QByteArray();
}

QFuture<QByteArray> SystemProxies::find(const QUrl& url) {
    if (isLoopback(url.host()))
        return QtFuture::makeReadyFuture(QByteArray());
    const QByteArray origin = originOf(url);
    const auto now = std::chrono::steady_clock::now();
    if (const auto known = m_answers.constFind(origin);
        known != m_answers.cend() && (known->proxy.isFinished() || now - known->asked < patience))
        return known->proxy;

    QPromise<QByteArray> promise;
    promise.start();
    const QFuture<QByteArray> proxy = promise.future();
    m_answers.insert(origin, {.proxy = proxy, .asked = now});
    // Detached: nothing can end a lookup that hangs, and the program does not wait for it.
    std::thread([promise = std::move(promise), lookup = m_lookup, origin]() mutable {
        promise.addResult(lookup(origin));
        promise.finish();
    }).detach();
    return proxy;
}

}  // namespace tidemark
