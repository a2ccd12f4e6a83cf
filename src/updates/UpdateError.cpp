#include "updates/UpdateError.h"

namespace tidemark {

using namespace Qt::StringLiterals;

QString description(UpdateError error) {
    switch (error) {
        case UpdateError::feedUnreachable:
            return u"The list of updates could not be fetched."_s;
        case UpdateError::feedInsecure:
            return u"The list of updates is not at a secure address, so it cannot be trusted."_s;
        case UpdateError::feedTooLarge:
            return u"The list of updates is unexpectedly large, so it was rejected."_s;
        case UpdateError::feedMalformed:
            return u"The list of updates could not be understood."_s;
        case UpdateError::needsNewerSystem:
            return u"A newer version is out, but it needs a newer system than this one."_s;
        case UpdateError::noFittingArchive:
            return u"A newer version is out, but not in the form in which Tidemark is installed here."_s;
        case UpdateError::archiveUnreachable:
            return u"The update could not be downloaded."_s;
        case UpdateError::archiveInsecure:
            return u"The update is not at a secure address, so it was not downloaded."_s;
        case UpdateError::archiveTooLarge:
            return u"The update is unexpectedly large, so it was rejected."_s;
        case UpdateError::archiveCut:
            return u"The download is incomplete. Try again later."_s;
        case UpdateError::archiveUnsigned:
            return u"The update is not signed, so it was not installed."_s;
        case UpdateError::keyUnusable:
            return u"This build cannot verify updates, because its key is invalid."_s;
        case UpdateError::signatureWrong:
            return QStringLiteral(
                "The update was not signed by Tidemark's developer. It was deleted, and nothing has "
                "changed.");
        case UpdateError::notReplaceable:
            return u"Tidemark cannot replace its own file. Download the new version by hand."_s;
        case UpdateError::notStorable:
            return u"The update could not be saved. Download the new version by hand."_s;
        case UpdateError::diskFull:
            return u"There is not enough room on the disk for the update."_s;
    }
    return {};
}

}  // namespace tidemark
