#pragma once

#include <QString>

namespace tidemark {

/// Why no update was found or installed.
enum class UpdateError : quint8 {
    feedUnreachable,     ///< no answer, or a status other than 200
    feedInsecure,        ///< the feed's address is not https
    feedTooLarge,        ///< more than a megabyte
    feedMalformed,       ///< not an appcast, or one that lacks a required value
    needsNewerSystem,    ///< the newer release requires a newer C library
    noFittingArchive,    ///< the newer release has no archive of the kind that is installed here
    archiveUnreachable,  ///< no answer, or a status other than 200
    archiveInsecure,     ///< the archive's address is not https
    archiveTooLarge,     ///< more than 256 MB according to the feed
    archiveCut,          ///< not as many bytes as the feed states
    archiveUnsigned,     ///< the feed contains no signature
    keyUnusable,         ///< the bundle's key is invalid
    signatureWrong,      ///< the signature does not belong to the archive or to the bundle's key
    notReplaceable,      ///< the running program's file cannot be replaced
    notStorable,         ///< the package cannot be written to the cache folder
    diskFull,
};

/// One or two short English sentences for the user.
[[nodiscard]] QString description(UpdateError error);

}  // namespace tidemark
