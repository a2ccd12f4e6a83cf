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

std::optional<QString> text(const QByteArray& data) {
    // Keeps a leading byte order mark, because it is part of the text.
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringConverter::Flag::Stateless | QStringConverter::Flag::ConvertInitialBom);
    QString decoded = decoder(data);
    if (decoder.hasError())
        return std::nullopt;
    return decoded;
}

}  // namespace

KeychainQuery query(const QString& account, bool synchronizable) {
    KeychainQuery attributes = queryEither(account);
    attributes.synchronizable = synchronizable;
    return attributes;
}

std::optional<QString> loadItem(Keychain& keychain, const QString& account, bool synchronizable) {
    const auto data = keychain.copyMatching(query(account, synchronizable));
    return data ? text(*data) : std::nullopt;
}

std::optional<QString> loadLegacyItem(Keychain& keychain, const QString& account) {
    const KeychainQuery either = queryEither(account);
    const auto data = keychain.copyMatching(either);
    if (!data)
        return std::nullopt;
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
    if (keychain.copyMatching(preferred) == data && !keychain.copyMatching(fallback))
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

std::optional<QString> loadToken(Keychain& keychain, const QString& account) {
    if (auto token = loadItem(keychain, account, true))
        return token;
    if (auto token = loadItem(keychain, account, false))
        return token;
    auto token = loadLegacyItem(keychain, account);
    if (token)
        save(keychain, *token, account);
    return token;
}

}  // namespace tidemark::KeychainHelper
