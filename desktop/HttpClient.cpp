#include "desktop/HttpClient.h"

namespace tidemark {

QString description(TransportError error) {
    switch (error) {
        case TransportError::hostNotFound:
            return QStringLiteral("The server could not be found.");
        case TransportError::connectionRefused:
            return QStringLiteral("The server refused the connection.");
        case TransportError::connectionLost:
            return QStringLiteral("The network connection was lost.");
        case TransportError::offline:
            return QStringLiteral("The network could not be reached.");
        case TransportError::timedOut:
            return QStringLiteral("The request timed out.");
        case TransportError::cancelled:
            return QStringLiteral("The request was cancelled.");
        case TransportError::insecure:
            return QStringLiteral("A secure connection to the server could not be made.");
        case TransportError::tooLarge:
            return QStringLiteral("The server's answer is too large.");
        case TransportError::proxyFailed:
            return QStringLiteral("The proxy server could not be used.");
        case TransportError::notHttp:
            return QStringLiteral("The server's answer could not be understood.");
        case TransportError::malformedHeader:
            return QStringLiteral("The token holds characters that cannot be sent.");
        case TransportError::other:
            return QStringLiteral("The request failed.");
    }
    return {};
}

}  // namespace tidemark
