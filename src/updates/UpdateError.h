#pragma once

#include <QString>

namespace tidemark {

/// Why there is no new release to run.
enum class UpdateError : quint8 {
    feedUnreachable,     ///< no answer, or one with another status than 200
    feedInsecure,        ///< the feed's address is not https
    feedTooLarge,        ///< more than a megabyte
    feedMalformed,       ///< not an appcast, or one that does not say what must be known
    needsNewerSystem,    ///< there is a newer release, but not for a C library this old
    noFittingArchive,    ///< there is a newer release, but not in the form that is installed here
    archiveUnreachable,  ///< no answer, or one with another status than 200
    archiveInsecure,     ///< the archive's address is not https
    archiveTooLarge,     ///< the feed announces more than 256 MB
    archiveCut,          ///< fewer bytes than the feed announces, or more
    archiveUnsigned,     ///< the feed names no signature
    keyUnusable,         ///< the bundle's key is none
    signatureWrong,      ///< the archive is not what was signed with the bundle's key
    notReplaceable,      ///< the running program's file cannot be replaced
    notStorable,         ///< the package cannot be written to the cache folder
    diskFull,
};

/// One or two short English sentences for the user.
[[nodiscard]] QString description(UpdateError error);

}  // namespace tidemark
