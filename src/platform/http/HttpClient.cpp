#include "platform/http/HttpClient.h"

#include <arpa/inet.h>

namespace tidemark {

using namespace Qt::StringLiterals;

QString description(TransportError error) {
    switch (error) {
        case TransportError::hostNotFound:
            return u"The server could not be found."_s;
        case TransportError::connectionRefused:
            return u"The server refused the connection."_s;
        case TransportError::connectionLost:
            return u"The network connection was lost."_s;
        case TransportError::offline:
            return u"The network could not be reached."_s;
        case TransportError::timedOut:
            return u"The request timed out."_s;
        case TransportError::cancelled:
            return u"The request was cancelled."_s;
        case TransportError::insecure:
            return u"A secure connection to the server could not be made."_s;
        case TransportError::tooLarge:
            return u"The server's answer is too large."_s;
        case TransportError::proxyFailed:
            return u"The proxy server could not be used."_s;
        case TransportError::notHttp:
            return u"The server's answer could not be understood."_s;
        case TransportError::malformedHeader:
            return u"The token holds characters that cannot be sent."_s;
        case TransportError::other:
            return u"The request failed."_s;
    }
    return {};
}

bool isLoopback(const QString& host) {
    if (host == "localhost"_L1)
        return true;
    const QByteArray text = host.toLatin1();
    in_addr address{};
    if (inet_pton(AF_INET, text.constData(), &address) == 1)
        return ntohl(address.s_addr) >> 24U == IN_LOOPBACKNET;
    in6_addr address6{};
    return inet_pton(AF_INET6, text.constData(), &address6) == 1 && IN6_IS_ADDR_LOOPBACK(&address6);
}

}  // namespace tidemark
