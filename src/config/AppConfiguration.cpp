#include "config/AppConfiguration.h"

#include <QUuid>
#include <algorithm>

#include "platform/base/JsonText.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

VercelAccount decodeAccount(JsonReader& account) {
    return {.id = account.requiredString("id"_L1),
            .name = account.requiredString("name"_L1),
            .teamId = account.requiredString("teamId"_L1)};
}

}  // namespace

VercelAccount VercelAccount::makeDefault() {
    return {.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper(),
            .name = u"Default"_s,
            .teamId = QString()};
}

bool AppConfiguration::hasToken() const {
    return std::ranges::any_of(accounts, [](const auto& account) { return !account.apiToken.isEmpty(); });
}

bool AppConfiguration::hasUnreadToken() const {
    return isCloudflareTokenUnread || std::ranges::any_of(accounts, &VercelAccount::isTokenUnread);
}

AppConfiguration AppConfiguration::completedBy(const AppConfiguration& other) const {
    AppConfiguration completed = *this;
    for (VercelAccount& account : completed.accounts) {
        const auto known = std::ranges::find(other.accounts, account.id, &VercelAccount::id);
        if (!account.isTokenUnread || known == other.accounts.cend() || known->isTokenUnread)
            continue;
        account.apiToken = known->apiToken;
        account.isTokenUnread = false;
    }
    if (isCloudflareTokenUnread && !other.isCloudflareTokenUnread) {
        completed.cloudflareToken = other.cloudflareToken;
        completed.isCloudflareTokenUnread = false;
    }
    return completed;
}

QByteArray AppConfiguration::encode() const {
    // Not by QJsonObject, because it would sort the members, and people read this file.
    QByteArrayList accountTexts;
    for (const auto& account : accounts) {
        accountTexts.append("    {\n      \"id\": " + jsonString(account.id) +
                            ",\n      \"name\": " + jsonString(account.name) +
                            ",\n      \"teamId\": " + jsonString(account.teamId) + "\n    }");
    }
    const QByteArray list = accounts.isEmpty() ? "[]" : "[\n" + accountTexts.join(",\n") + "\n  ]";
    const auto text = [](bool value) -> QByteArray { return value ? "true" : "false"; };
    return "{\n  \"accounts\": " + list +
           ",\n  \"pollingIntervalSeconds\": " + QByteArray::number(pollingIntervalSeconds) +
           ",\n  \"launchAtLogin\": " + text(launchAtLogin) + ",\n  \"soundEnabled\": " + text(soundEnabled) +
           "\n}\n";
}

tl::expected<AppConfiguration, DecodingError> AppConfiguration::decode(
    const QByteArray& json, const std::function<void(const VercelAccount&)>& migrateToken) {
    QString singleTeamId;
    auto configuration = JsonReader::decodeObject(json, [&](JsonReader& root) {
        singleTeamId = root.lenientString("teamId"_L1);
        return AppConfiguration{
            .accounts = root.lenientArray("accounts"_L1, decodeAccount).value_or(QList<VercelAccount>()),
            .pollingIntervalSeconds = root.optionalInteger("pollingIntervalSeconds"_L1).value_or(30),
            .launchAtLogin = root.optionalBool("launchAtLogin"_L1).value_or(false),
            .soundEnabled = root.optionalBool("soundEnabled"_L1).value_or(true)};
    });
    if (configuration && configuration->accounts.isEmpty()) {
        // Earlier versions had one account and stored its team at the top level.
        VercelAccount account = VercelAccount::makeDefault();
        account.teamId = singleTeamId;
        migrateToken(account);
        configuration->accounts.append(account);
    }
    return configuration;
}

}  // namespace tidemark
