#pragma once

#include <QUrl>

namespace tidemark {

/// Every address outside this machine that the program knows.
struct Endpoints {
    /// Scheme and host of the Vercel REST API.
    QUrl vercelApi;
    /// The summary document of the Vercel status page.
    QUrl vercelStatus;

    /// The real services.
    [[nodiscard]] static Endpoints production();
    /// Stand-ins for all of them below one address, which has no path.
    [[nodiscard]] static Endpoints below(const QUrl& base);
};

}  // namespace tidemark
