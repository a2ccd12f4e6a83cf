#pragma once

#include <QByteArray>
#include <QFuture>
#include <QHash>
#include <QUrl>
#include <chrono>
#include <functional>

namespace tidemark {

/// The proxies that the desktop's settings or the environment name. A setting can be a script on a server
/// (PAC), which may take any time, so that each question has a thread of its own. Answers are remembered.
/// UI thread only.
class SystemProxies final {
public:
    /// The proxy for an origin: "http://host:port", "socks5h://host:port", …, perhaps with name and password;
    /// empty for none. Called on another thread, and possibly by several at once.
    using Lookup = std::function<QByteArray(const QByteArray& origin)>;

    /// Asks libproxy.
    [[nodiscard]] static QByteArray systemProxy(const QByteArray& origin);

    explicit SystemProxies(Lookup lookup = &systemProxy) : m_lookup(std::move(lookup)) {}

    /// The proxy for the origin of the address. Finished if the answer is known. A question without an answer
    /// is asked again after a minute.
    [[nodiscard]] QFuture<QByteArray> find(const QUrl& url);

    /// Asks anew from now on, because the network has changed.
    void forget() { m_answers.clear(); }

private:
    struct Answer {
        QFuture<QByteArray> proxy;
        std::chrono::steady_clock::time_point asked;
    };

    Lookup m_lookup;
    QHash<QByteArray, Answer> m_answers;
};

}  // namespace tidemark
