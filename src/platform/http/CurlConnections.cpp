#include "platform/http/CurlConnections.h"

#include <QtGlobal>
#include <csignal>
#include <utility>

namespace tidemark {

namespace {

/// Like browsers.
constexpr long connectionsPerHost = 6;

void initialiseOnce() {
    static const CURLcode code = [] {
        // libcurl is told to leave the signals alone, and OpenSSL writes to connections that have gone.
        std::signal(SIGPIPE, SIG_IGN);
        return curl_global_init(CURL_GLOBAL_DEFAULT);
    }();
    if (code != CURLE_OK)
        qFatal("libcurl: %s", curl_easy_strerror(code));
}

/// Deletes a notifier that may be the one that is being handled.
void dismiss(std::unique_ptr<QSocketNotifier> notifier) {
    if (!notifier)
        return;
    notifier->setEnabled(false);
    notifier.release()->deleteLater();
}

}  // namespace

CurlConnections::CurlConnections() : m_multi((initialiseOnce(), curl_multi_init())) {
    if (m_multi == nullptr)
        qFatal("libcurl: no memory");
    m_timer.setSingleShot(true);
    m_timer.callOnTimeout(this, [this] { act(CURL_SOCKET_TIMEOUT, 0); });
    curl_multi_setopt(m_multi, CURLMOPT_SOCKETFUNCTION, &CurlConnections::onSocket);
    curl_multi_setopt(m_multi, CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(m_multi, CURLMOPT_TIMERFUNCTION, &CurlConnections::onTimer);
    curl_multi_setopt(m_multi, CURLMOPT_TIMERDATA, this);
    curl_multi_setopt(m_multi, CURLMOPT_MAX_HOST_CONNECTIONS, connectionsPerHost);
    curl_multi_setopt(m_multi, CURLMOPT_PIPELINING, CURLPIPE_NOTHING);
}

CurlConnections::~CurlConnections() {
    curl_multi_setopt(m_multi, CURLMOPT_SOCKETFUNCTION, nullptr);
    curl_multi_setopt(m_multi, CURLMOPT_TIMERFUNCTION, nullptr);
    m_sockets.clear();
    curl_multi_cleanup(m_multi);
}

void CurlConnections::add(CURL* transfer, Completion completion) {
    m_completions[transfer] = std::move(completion);
    curl_multi_add_handle(m_multi, transfer);
}

void CurlConnections::remove(CURL* transfer) {
    curl_multi_remove_handle(m_multi, transfer);
    m_completions.remove(transfer);
}

int CurlConnections::onSocket(CURL* /*transfer*/, curl_socket_t socket, int what, void* self,
                              void* /*unused*/) {
    auto& connections = *static_cast<CurlConnections*>(self);
    if (what == CURL_POLL_REMOVE) {
        if (auto gone = connections.m_sockets.extract(socket)) {
            dismiss(std::move(gone.mapped().read));
            dismiss(std::move(gone.mapped().write));
        }
        return 0;
    }
    Socket& watched = connections.m_sockets[socket];
    if (!watched.read) {
        watched.read = connections.notifier(socket, QSocketNotifier::Read, CURL_CSELECT_IN);
        watched.write = connections.notifier(socket, QSocketNotifier::Write, CURL_CSELECT_OUT);
    }
    watched.read->setEnabled((what & CURL_POLL_IN) != 0);
    watched.write->setEnabled((what & CURL_POLL_OUT) != 0);
    return 0;
}

int CurlConnections::onTimer(CURLM* /*multi*/, long milliseconds, void* self) {
    auto& timer = static_cast<CurlConnections*>(self)->m_timer;
    if (milliseconds < 0)
        timer.stop();
    else
        timer.start(std::chrono::milliseconds(milliseconds));
    return 0;
}

std::unique_ptr<QSocketNotifier> CurlConnections::notifier(curl_socket_t socket, QSocketNotifier::Type type,
                                                           int event) {
    auto result = std::make_unique<QSocketNotifier>(socket, type);
    result->setEnabled(false);
    connect(result.get(), &QSocketNotifier::activated, this, [this, socket, event] { act(socket, event); });
    return result;
}

void CurlConnections::act(curl_socket_t socket, int events) {
    int running = 0;
    curl_multi_socket_action(m_multi, socket, events, &running);
    reportCompleted();
}

void CurlConnections::reportCompleted() {
    int left = 0;
    while (const CURLMsg* const message = curl_multi_info_read(m_multi, &left)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        const CURLcode code = message->data.result;
        if (const Completion completion = m_completions.take(message->easy_handle))
            completion(code);
    }
}

}  // namespace tidemark
