#pragma once

#include <QString>

namespace tidemark {

/// What a build says of itself. Tools and tests have an empty one unless they fill it.
struct Bundle {
    /// Reverse-DNS name: bus name, desktop entry, autostart entry. Empty outside an installed program.
    QString identifier;
    QString version;
    /// Address of the release feed and the public key (base64) that releases are signed with.
    QString feedUrl;
    QString publicKey;
};

}  // namespace tidemark
