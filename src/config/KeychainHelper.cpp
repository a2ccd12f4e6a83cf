#include "config/KeychainHelper.h"

#include <QStringDecoder>
#include <QStringEncoder>
#include <tuple>

using namespace Qt::StringLiterals;

namespace tidemark::KeychainHelper {

namespace {

KeychainQuery queryEither(const QString& account) {
    return {.service = u"com.tidemark"_s, .account = account, .synchronizable = std::nullopt};
}

LoadedToken text(const QByteArray& data) {
    // Keeps a leading byte order mark, because it is part of the text.
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringConverter::Flag::Stateless | QStringConverter::Flag::ConvertInitialBom);
    QString decoded = decoder(data);
    if (decoder.hasError())
        return tl::unexpected(KeychainError::notFound);
    return decoded;
}

}  // namespace

KeychainQuery query(const QString& account, bool synchronizable) {
    KeychainQuery attributes = queryEither(account);
    attributes.synchronizable = synchronizable;
    return attributes;
}

LoadedToken loadItem(Keychain& keychain, const QString& account, bool synchronizable) {
    return keychain.copyMatching(query(account, synchronizable)).and_then(text);
}

LoadedToken loadLegacyItem(Keychain& keychain, const QString& account) {
    const KeychainQuery either = queryEither(account);
    const auto data = keychain.copyMatching(either);
    if (!data)
        return tl::unexpected(data.error());
    keychain.deleteMatching(either);
    return text(*data);
}

void save(Keychain& keychain, const QString& value, const QString& account) {
    QStringEncoder encoder(QStringEncoder::Utf8, QStringConverter::Flag::Stateless);
    const QByteArray data = encoder(value);
    if (encoder.hasError())
        return;
    const KeychainQuery preferred = query(account, true);
    const KeychainQuery fallback = query(account, false);
    const auto isNotThere = [](const auto& item) { return !item && item.error() == KeychainError::notFound; };
    if (keychain.copyMatching(preferred) == data && isNotThere(keychain.copyMatching(fallback)))
        return;
    // The new item is there before the old ones go: a program that is killed in between loses no token.
    if (keychain.add(preferred, data)) {
        keychain.deleteMatching(fallback);
        const auto stored = keychain.copyMatching(preferred);
        if (!stored || *stored == data)
            return;
        // There were several such items, and the store replaced another one of them.
        keychain.deleteMatching(preferred);
        std::ignore = keychain.add(preferred, data);
        return;
    }
    const bool isStored = keychain.add(fallback, data);
    keychain.deleteMatching(preferred);
    if (!isStored)
        keychain.deleteMatching(fallback);
}

LoadedToken loadToken(Keychain& keychain, const QString& account) {
    for (const bool synchronizable : {true, false}) {
        auto token = loadItem(keychain, account, synchronizable);
        if (token || token.error() == KeychainError::unreadable)
            return token;
    }
    auto token = loadLegacyItem(keychain, account);
    if (token)
        save(keychain, *token, account);
    return token;
}

}  // namespace tidemark::KeychainHelper
