#pragma once

#include <QString>

namespace tidemark {

/// Constants of a build. Empty in tools and tests that do not set them.
struct Bundle {
    /// Reverse-DNS name, used as bus name and for the desktop and autostart entries. Empty outside an
    /// installed program.
    QString identifier;
    QString version;
    /// Address of the release feed, and the public key (base64) for the signatures of releases.
    QString feedUrl;
    QString publicKey;
};

}  // namespace tidemark
