#include "platform/session/Workspace.h"

#include <algorithm>

namespace tidemark {

using namespace Qt::StringLiterals;

std::optional<QUrl> webAddress(const QString& text) {
    const bool hasForbidden = std::ranges::any_of(
        text, [](QChar c) { return c.isSpace() || c.category() == QChar::Other_Control; });
    if (hasForbidden)
        return std::nullopt;
    QUrl url(text, QUrl::StrictMode);
    const bool isWeb = url.scheme() == "http"_L1 || url.scheme() == "https"_L1;
    if (!url.isValid() || !isWeb || url.host().isEmpty())
        return std::nullopt;
    return url;
}

}  // namespace tidemark
