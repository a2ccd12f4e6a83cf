#include "desktop/UpdateError.h"

namespace tidemark {

QString description(UpdateError error) {
    switch (error) {
        case UpdateError::feedUnreachable:
            return QStringLiteral("The list of updates could not be fetched.");
        case UpdateError::feedInsecure:
            return QStringLiteral("The list of updates is not at a secure address, so it cannot be trusted.");
        case UpdateError::feedTooLarge:
            return QStringLiteral("The list of updates is too large to be genuine.");
        case UpdateError::feedMalformed:
            return QStringLiteral("The list of updates could not be understood.");
        case UpdateError::needsNewerSystem:
            return QStringLiteral("A newer version is out, but it needs a newer system than this one.");
        case UpdateError::noFittingArchive:
            return QStringLiteral(
                "A newer version is out, but not in the form in which Tidemark is installed here.");
        case UpdateError::archiveUnreachable:
            return QStringLiteral("The update could not be downloaded.");
        case UpdateError::archiveInsecure:
            return QStringLiteral("The update is not at a secure address, so it was not downloaded.");
        case UpdateError::archiveTooLarge:
            return QStringLiteral("The update is too large to be genuine.");
        case UpdateError::archiveCut:
            return QStringLiteral("The update did not arrive whole. Try again later.");
        case UpdateError::archiveUnsigned:
            return QStringLiteral("The update is not signed, so it was not installed.");
        case UpdateError::keyUnusable:
            return QStringLiteral(
                "This build cannot tell whether an update is genuine: its key is unusable.");
        case UpdateError::signatureWrong:
            return QStringLiteral(
                "The update was not signed by Tidemark's developer. It was deleted, and nothing has "
                "changed.");
        case UpdateError::notReplaceable:
            return QStringLiteral("Tidemark cannot replace its own file. Download the new version by hand.");
        case UpdateError::notStorable:
            return QStringLiteral("The update could not be saved. Download the new version by hand.");
        case UpdateError::diskFull:
            return QStringLiteral("There is not enough room on the disk for the update.");
    }
    return {};
}

}  // namespace tidemark
