#include "tests/fakes/FakeHttpClient.h"

#include <QCoroFuture>
#include <QObject>
#include <QPromise>
#include <QTest>
#include <algorithm>
#include <optional>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

QString pathAndQuery(const QUrl& url) {
    QString text = url.path(QUrl::FullyEncoded);
    if (url.hasQuery())
        text += QLatin1Char('?') + url.query(QUrl::FullyEncoded);
    return text;
}

}  // namespace

/// One request under way. The first `end` counts.
struct FakeHttpClient::Exchange : QObject {
    HttpRequest request;
    std::optional<HttpResult> result;
    QPromise<void> promise;

    void end(const HttpResult& outcome) {
        if (result)
            return;
        result = outcome;
        QMetaObject::invokeMethod(this, [this] { promise.finish(); }, Qt::QueuedConnection);
    }
};

FakeHttpClient::FakeHttpClient() = default;

FakeHttpClient::~FakeHttpClient() {
    for (const auto& exchange : std::as_const(m_exchanges))
        exchange->end(tl::unexpected(TransportError::cancelled));
}

void FakeHttpClient::answer(HttpMethod method, const QString& target, HttpResult result) {
    answer(method, target, [result = std::move(result)](const HttpRequest&) { return result; });
}

void FakeHttpClient::answer(HttpMethod method, const QString& target, Responder responder) {
    m_prepared[key(method, target)].responder = std::move(responder);
}

void FakeHttpClient::hold(HttpMethod method, const QString& target) {
    m_prepared[key(method, target)].isHeld = true;
}

void FakeHttpClient::release(HttpMethod method, const QString& target) {
    m_prepared[key(method, target)].isHeld = false;
    const auto exchanges = m_exchanges;
    for (const auto& exchange : exchanges)
        answerUnlessHeld(exchange);
}

qsizetype FakeHttpClient::count(HttpMethod method, const QString& target) const {
    return std::count_if(m_requests.begin(), m_requests.end(), [&](const HttpRequest& request) {
        return request.method == method &&
               (target == pathAndQuery(request.url) || target == request.url.toString(QUrl::FullyEncoded));
    });
}

QCoro::Task<HttpResult> FakeHttpClient::send(HttpRequest request, std::stop_token stop) {
    const auto exchange = std::make_shared<Exchange>();
    exchange->request = std::move(request);
    exchange->promise.start();
    const std::stop_callback onStop(std::move(stop), [this, &exchange] {
        if (!exchange->result)
            m_exchanges.removeOne(exchange);
        exchange->end(tl::unexpected(TransportError::cancelled));
    });
    if (!exchange->result) {
        m_requests.append(exchange->request);
        m_exchanges.append(exchange);
        QMetaObject::invokeMethod(
            exchange.get(),
            [this, &exchange] {
                if (!exchange->result)
                    answerUnlessHeld(exchange);
            },
            Qt::QueuedConnection);
    }
    const QFuture<void> future = exchange->promise.future();
    co_await future;
    co_return *exchange->result;
}

QCoro::Task<tl::expected<int, TransportError>> FakeHttpClient::download(HttpDownload download, HttpSink sink,
                                                                        std::stop_token stop) {
    HttpRequest request{.url = download.url, .timeout = download.patience, .bodyLimit = download.limit};
    const HttpResult result = co_await send(std::move(request), std::move(stop));
    if (!result)
        co_return tl::unexpected(result.error());
    if (result->body.size() > download.limit)
        co_return tl::unexpected(TransportError::tooLarge);
    if (result->status == 200 && !sink(result->body))
        co_return tl::unexpected(TransportError::cancelled);
    co_return result->status;
}

QString FakeHttpClient::key(HttpMethod method, const QString& target) {
    return (method == HttpMethod::get ? u"GET "_s : u"POST "_s) + target;
}

const FakeHttpClient::Prepared* FakeHttpClient::find(const HttpRequest& request) const {
    for (const QString& target : {request.url.toString(QUrl::FullyEncoded), pathAndQuery(request.url)}) {
        const auto found = m_prepared.constFind(key(request.method, target));
        if (found != m_prepared.cend())
            return &*found;
    }
    return nullptr;
}

HttpResult FakeHttpClient::resultFor(const HttpRequest& request) {
    const Prepared* prepared = find(request);
    if (prepared && prepared->responder) {
        // A copy: the responder may prepare the next answer.
        const Responder responder = prepared->responder;
        return responder(request);
    }
    const QString message = u"Nothing was prepared for "_s + key(request.method, request.url.toString());
    QTest::qFail(qPrintable(message), __FILE__, __LINE__);
    return tl::unexpected(TransportError::other);
}

void FakeHttpClient::answerUnlessHeld(const std::shared_ptr<Exchange>& exchange) {
    const Prepared* prepared = find(exchange->request);
    if (prepared && prepared->isHeld)
        return;
    m_exchanges.removeOne(exchange);
    exchange->end(resultFor(exchange->request));
}

HttpResult httpAnswer(int status, const QByteArray& body) {
    return HttpResponse{.status = status, .body = body};
}

}  // namespace tidemark
