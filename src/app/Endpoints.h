#pragma once

#include <QString>
#include <QUrl>

namespace tidemark {

/// Every address outside this machine that the program knows, but for the feed of releases, which belongs to
/// the build (`Bundle::feedUrl`).
struct Endpoints {
    /// Scheme and host of the Vercel REST API.
    QUrl vercelApi;
    /// The summary document of the Vercel status page.
    QUrl vercelStatus;
    /// Scheme and host of the Cloudflare API.
    QUrl cloudflareApi;
    /// The pages that the user is sent to, which a browser opens.
    QUrl vercelDashboard{QStringLiteral("https://vercel.com/dashboard")};
    QUrl cloudflareDashboard{QStringLiteral("https://dash.cloudflare.com")};
    /// Where the user makes a token.
    QUrl vercelTokens{QStringLiteral("https://vercel.com/account/settings/tokens")};
    QUrl cloudflareTokens{QStringLiteral("https://dash.cloudflare.com/profile/api-tokens")};

    /// The real services.
    [[nodiscard]] static Endpoints production();
    /// Stand-ins for all services below one address, which has no path. The pages are the real ones.
    [[nodiscard]] static Endpoints below(const QUrl& base);
};

}  // namespace tidemark
