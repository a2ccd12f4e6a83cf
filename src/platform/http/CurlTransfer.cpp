#include "platform/http/CurlTransfer.h"

#include <cerrno>
#include <climits>
#include <tuple>

namespace tidemark {

namespace {

TransportError connectError(long systemError) {
    switch (systemError) {
        case ECONNREFUSED:
            return TransportError::connectionRefused;
        case ENETDOWN:
        case ENETUNREACH:
        case EHOSTDOWN:
        case EHOSTUNREACH:
            return TransportError::offline;
        case ETIMEDOUT:
            return TransportError::timedOut;
        default:
            return TransportError::connectionLost;
    }
}

TransportError transportError(CURLcode code, long systemError) {
    switch (code) {
        case CURLE_COULDNT_RESOLVE_HOST:
            return TransportError::hostNotFound;
        case CURLE_COULDNT_CONNECT:
            return connectError(systemError);
        case CURLE_OPERATION_TIMEDOUT:
            return TransportError::timedOut;
        case CURLE_COULDNT_RESOLVE_PROXY:
        case CURLE_PROXY:
            return TransportError::proxyFailed;
        case CURLE_SSL_CONNECT_ERROR:
        case CURLE_SSL_CERTPROBLEM:
        case CURLE_SSL_CIPHER:
        case CURLE_SSL_CACERT_BADFILE:
        case CURLE_SSL_ISSUER_ERROR:
        case CURLE_SSL_ENGINE_INITFAILED:
        case CURLE_SSL_INVALIDCERTSTATUS:
        case CURLE_PEER_FAILED_VERIFICATION:
            return TransportError::insecure;
        case CURLE_UNSUPPORTED_PROTOCOL:  // such as HTTP/0.9
        case CURLE_WEIRD_SERVER_REPLY:
            return TransportError::notHttp;
        case CURLE_GOT_NOTHING:
        case CURLE_PARTIAL_FILE:
        case CURLE_RECV_ERROR:
        case CURLE_SEND_ERROR:
        case CURLE_SEND_FAIL_REWIND:
            return TransportError::connectionLost;
        default:
            return TransportError::other;
    }
}

}  // namespace

CurlTransfer::CurlTransfer(const HttpRequest& request, const Settings& settings, Writer writer)
    : m_writer(std::move(writer)),
      m_hasProxy(!settings.proxy.isEmpty()),
      m_headers(headerLines(request, settings.encoding)),
      m_handle(curl_easy_init()) {
    if (!m_handle)
        qFatal("libcurl: no memory");
    set(CURLOPT_URL, request.url.toEncoded(QUrl::RemoveFragment).constData());
    set(CURLOPT_PATH_AS_IS, 1L);
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_PROXY, settings.proxy.constData());
    set(CURLOPT_USERAGENT, settings.userAgent.constData());
    set(CURLOPT_HTTPHEADER, m_headers.get());
    set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    // A dead HTTP/2 connection would be used again. With HTTP/1.1 only one request fails.
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    // A name that does not resolve must not hold up the event loop when the request ends early.
    set(CURLOPT_QUICK_EXIT, 1L);
    set(CURLOPT_NOSIGNAL, 1L);
    // The deadline is the caller's.
    set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(INT_MAX));
    if (!settings.authorities.isEmpty()) {
        set(CURLOPT_CAPATH, nullptr);
        set(CURLOPT_CAINFO, settings.authorities.constData());
    }
    if (request.method == HttpMethod::post) {
        set(CURLOPT_POST, 1L);
        set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
        set(CURLOPT_COPYPOSTFIELDS, request.body.constData());
        // On a kept connection that has died libcurl would send it again.
        set(CURLOPT_FRESH_CONNECT, 1L);
    }
    set(CURLOPT_WRITEFUNCTION, &CurlTransfer::onPiece);
    set(CURLOPT_WRITEDATA, this);
}

size_t CurlTransfer::onPiece(const char* data, size_t /*one*/, size_t size, void* self) {
    return static_cast<CurlTransfer*>(self)->m_writer({data, static_cast<qsizetype>(size)}) ? size : 0;
}

void CurlTransfer::append(HeaderList& list, const QByteArray& line) {
    curl_slist* const longer = curl_slist_append(list.get(), line.constData());
    if (longer == nullptr)
        qFatal("libcurl: no memory");
    std::ignore = list.release();
    list.reset(longer);
}

/// Header lines in libcurl's notation: "Name;" is one without a value.
CurlTransfer::HeaderList CurlTransfer::headerLines(const HttpRequest& request, const QByteArray& encoding) {
    HeaderList lines;
    append(lines, "Accept-Encoding: " + encoding);
    bool hasContentType = false;
    for (const auto& [name, value] : request.headers) {
        append(lines, value.isEmpty() ? name + ';' : name + ": " + value);
        hasContentType = hasContentType || name.compare("content-type", Qt::CaseInsensitive) == 0;
    }
    if (request.method == HttpMethod::post) {
        if (!hasContentType)
            append(lines, "Content-Type: application/octet-stream");
        append(lines, "Expect:");
    }
    return lines;
}

int CurlTransfer::status() const {
    return static_cast<int>(info<long>(CURLINFO_RESPONSE_CODE));
}

QByteArray CurlTransfer::contentEncoding() const {
    curl_header* header = nullptr;
    const bool isGiven =
        curl_easy_header(m_handle.get(), "Content-Encoding", 0, CURLH_HEADER, -1, &header) == CURLHE_OK;
    return isGiven ? QByteArray(header->value).toLower() : QByteArray();
}

QUrl CurlTransfer::redirectTarget() const {
    const int code = status();
    const bool isRedirect = code == 301 || code == 302 || code == 303 || code == 307 || code == 308;
    return isRedirect ? QUrl::fromEncoded(info<const char*>(CURLINFO_REDIRECT_URL)) : QUrl();
}

TransportError CurlTransfer::error(CURLcode code) const {
    const auto tunnel = info<long>(CURLINFO_HTTP_CONNECTCODE);
    const TransportError error = transportError(code, info<long>(CURLINFO_OS_ERRNO));
    const bool isConnected = status() != 0 || tunnel / 100 == 2;
    return m_hasProxy && !isConnected && error != TransportError::timedOut ? TransportError::proxyFailed
                                                                           : error;
}

}  // namespace tidemark
