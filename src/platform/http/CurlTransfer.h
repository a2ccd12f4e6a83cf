#pragma once

#include <curl/curl.h>

#include <QUrl>
#include <functional>
#include <memory>

#include "platform/http/HttpClient.h"

namespace tidemark {

/// One request of libcurl's easy interface, and what is known of its answer. It is run by `CurlConnections`.
class CurlTransfer final {
public:
    /// Takes a piece of the body. False ends the transfer.
    using Writer = std::function<bool(QByteArrayView piece)>;

    struct Settings {
        QByteArray userAgent;
        /// "gzip", or "identity" for none.
        QByteArray encoding;
        /// A file of certificates (PEM) that are trusted instead of the system's; empty for the system's.
        QByteArray authorities;
        /// As libcurl writes one; empty for none.
        QByteArray proxy;
    };

    /// Neither decompresses nor follows a redirect, and has no deadline.
    CurlTransfer(const HttpRequest& request, const Settings& settings, Writer writer);
    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;
    ~CurlTransfer() = default;

    [[nodiscard]] CURL* handle() const { return m_handle.get(); }

    /// 0 before the answer has one.
    [[nodiscard]] int status() const;
    /// In lower case; empty for none.
    [[nodiscard]] QByteArray contentEncoding() const;
    /// Where the answer's redirect leads, absolute; otherwise invalid.
    [[nodiscard]] QUrl redirectTarget() const;
    /// Why the transfer ended, for any code but CURLE_OK.
    [[nodiscard]] TransportError error(CURLcode code) const;

private:
    struct Free {
        void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
        void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    };
    using HeaderList = std::unique_ptr<curl_slist, Free>;

    static size_t onPiece(const char* data, size_t one, size_t size, void* self);
    static void append(HeaderList& list, const QByteArray& line);
    static HeaderList headerLines(const HttpRequest& request, const QByteArray& encoding);

    template <typename Value>
    void set(CURLoption option, Value value) {
        curl_easy_setopt(m_handle.get(), option, value);
    }

    template <typename Value>
    [[nodiscard]] Value info(CURLINFO which) const {
        Value value{};
        curl_easy_getinfo(m_handle.get(), which, &value);
        return value;
    }

    Writer m_writer;
    bool m_hasProxy;
    HeaderList m_headers;
    /// After what it uses.
    std::unique_ptr<CURL, Free> m_handle;
};

}  // namespace tidemark
