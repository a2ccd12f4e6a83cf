#pragma once

#include <QString>
#include <memory>

#include "sandbox/http/Exchange.h"

namespace tidemark::sandbox {

/// Answers with a feed of the program's releases and their archives, signed with a key made on the spot.
///
/// /updates/appcast.xml offers one good release, newer than any real one, as AppImage and as package. What is
/// wrong with the others is their name: unsigned, tampered, wrong-key, cut, slow, short, long, missing,
/// older, prerelease, newer-system, oversized and malformed.xml. "?size=" (bytes) and "?seconds=" (how long
/// the archive takes) go with each. /updates/public-key gives the key. Nothing in it ever changes, so that
/// any thread may ask.
class UpdateService final {
public:
    UpdateService();
    UpdateService(const UpdateService&) = delete;
    UpdateService& operator=(const UpdateService&) = delete;
    ~UpdateService();

    [[nodiscard]] static bool serves(const QString& path);

    [[nodiscard]] Reply answer(const Request& request) const;

    /// The public key of the good release, in base64.
    [[nodiscard]] QString publicKey() const;

    /// The archive as the good release has it. As AppImage it is a script that prints its version.
    [[nodiscard]] static QByteArray archive(const QString& version, qsizetype size);

private:
    class SigningKey;
    struct Release;

    [[nodiscard]] Reply feed(const Request& request) const;
    [[nodiscard]] static Reply archiveReply(const Request& request);
    [[nodiscard]] QByteArray document(const Release& release) const;
    [[nodiscard]] QByteArray enclosure(const Release& release, QLatin1StringView suffix,
                                       QLatin1StringView type) const;

    std::unique_ptr<SigningKey> m_key;
    /// Somebody else's.
    std::unique_ptr<SigningKey> m_wrongKey;
};

}  // namespace tidemark::sandbox
