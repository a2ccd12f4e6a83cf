#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <functional>
#include <memory>

#include "platform/http/HttpClient.h"

namespace tidemark {

/// A network that knows only what the test prepared. A request that nothing was prepared for fails the test
/// and gets `TransportError::other`.
///
/// A target names requests by path and query as they stand in the address ("/v9/projects?limit=100"), or,
/// where the host matters, by the whole address ("https://example.com/v9/projects"), which goes first.
class FakeHttpClient final : public HttpClient {
public:
    using Responder = std::function<HttpResult(const HttpRequest&)>;

    FakeHttpClient();
    /// Requests still under way end with `cancelled`, as in the real client.
    ~FakeHttpClient() override;

    /// Answers every such request from now on, in place of what was prepared before.
    void answer(HttpMethod method, const QString& target, HttpResult result);
    /// The same with an answer made for each request, at the moment it is answered.
    void answer(HttpMethod method, const QString& target, Responder responder);

    /// Keeps back the answers to such requests, those under way included, until `release`.
    void hold(HttpMethod method, const QString& target);
    void release(HttpMethod method, const QString& target);

    /// Every request sent so far, in order. One whose stop was triggered beforehand was never sent.
    [[nodiscard]] const QList<HttpRequest>& requests() const { return m_requests; }
    /// How many of them were such requests.
    [[nodiscard]] qsizetype count(HttpMethod method, const QString& target) const;
    /// How many of them have no answer yet.
    [[nodiscard]] qsizetype pendingCount() const { return m_exchanges.size(); }

    [[nodiscard]] QCoro::Task<HttpResult> send(HttpRequest request, std::stop_token stop) override;
    /// Answered like any other GET. The whole body comes in one piece.
    [[nodiscard]] QCoro::Task<tl::expected<int, TransportError>> download(HttpDownload download,
                                                                          HttpSink sink,
                                                                          std::stop_token stop) override;

private:
    struct Exchange;
    struct Prepared {
        Responder responder;
        bool isHeld = false;
    };

    static QString key(HttpMethod method, const QString& target);
    /// What was prepared for the request; null when nothing was.
    [[nodiscard]] const Prepared* find(const HttpRequest& request) const;
    HttpResult resultFor(const HttpRequest& request);
    /// Gives the answer, unless it is held back. Called from the event loop.
    void answerUnlessHeld(const std::shared_ptr<Exchange>& exchange);

    QHash<QString, Prepared> m_prepared;
    QList<HttpRequest> m_requests;
    QList<std::shared_ptr<Exchange>> m_exchanges;
};

/// An answer with a status and a body.
[[nodiscard]] HttpResult httpAnswer(int status, const QByteArray& body = {});

}  // namespace tidemark
