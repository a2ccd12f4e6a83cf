#include "config/ConfigStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "config/KeychainHelper.h"
#include "platform/base/FileWriting.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 maximumFileSize = qint64{1024} * 1024;
const QString cloudflareTokenAccount = u"cloudflareToken"_s;
/// The name under which versions with a single account stored its token.
const QString singleTokenAccount = u"apiToken"_s;

QString tokenAccount(const VercelAccount& account) {
    return u"apiToken-"_s + account.id;
}

}  // namespace

ConfigStore::ConfigStore(QString configPath, Keychain& keychain)
    : m_configPath(std::move(configPath)), m_keychain(&keychain) {}

QString ConfigStore::configURL() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           u"/Tidemark/config.json"_s;
}

std::optional<AppConfiguration> ConfigStore::load() const {
    auto configuration = read();
    return configuration && configuration->hasToken() ? configuration : std::nullopt;
}

std::optional<AppConfiguration> ConfigStore::read(Keychain::Prompting prompting) const {
    const KeychainSession session(*m_keychain, prompting);
    const auto content = readFile(m_configPath, maximumFileSize);
    if (!content)
        return std::nullopt;
    const auto migrateToken = [this](const VercelAccount& account) {
        const auto token = KeychainHelper::loadToken(*m_keychain, singleTokenAccount);
        if (token && !token->isEmpty())
            KeychainHelper::save(*m_keychain, *token, tokenAccount(account));
    };
    auto configuration = AppConfiguration::decode(*content, migrateToken);
    if (!configuration)
        return std::nullopt;
    for (auto& account : configuration->accounts)
        readToken(tokenAccount(account), account.apiToken, account.isTokenUnread);
    readToken(cloudflareTokenAccount, configuration->cloudflareToken, configuration->isCloudflareTokenUnread);
    return *std::move(configuration);
}

void ConfigStore::readToken(const QString& account, QString& token, bool& isUnread) const {
    const KeychainHelper::LoadedToken loaded = KeychainHelper::loadToken(*m_keychain, account);
    token = loaded.value_or(QString());
    isUnread = !loaded && loaded.error() == KeychainError::unreadable;
}

tl::expected<void, QString> ConfigStore::keepWhatIsReplaced(const AppConfiguration& configuration) const {
    if (!QFileInfo(m_configPath).isFile() || QFileInfo(m_configPath).size() == 0)
        return {};
    if (const auto content = readFile(m_configPath, maximumFileSize)) {
        const auto former = AppConfiguration::decode(*content, [](const VercelAccount&) {});
        const auto livesOn = [&configuration](const VercelAccount& account) {
            return std::ranges::find(configuration.accounts, account.id, &VercelAccount::id) !=
                   configuration.accounts.cend();
        };
        if (former && std::ranges::any_of(former->accounts, livesOn))
            return {};
    }
    std::error_code error;
    std::filesystem::copy_file(QFileInfo(m_configPath).filesystemFilePath(),
                               QFileInfo(m_configPath + u".bak"_s).filesystemFilePath(),
                               std::filesystem::copy_options::overwrite_existing, error);
    if (error)
        return tl::unexpected(QString::fromStdString(error.message()));
    return {};
}

tl::expected<void, QString> ConfigStore::save(const AppConfiguration& configuration) const {
    const KeychainSession session(*m_keychain, Keychain::Prompting::allowed);
    for (const auto& account : configuration.accounts)
        if (!account.isTokenUnread)
            KeychainHelper::save(*m_keychain, account.apiToken, tokenAccount(account));
    if (!configuration.isCloudflareTokenUnread)
        KeychainHelper::save(*m_keychain, configuration.cloudflareToken, cloudflareTokenAccount);

    std::error_code error;
    std::filesystem::create_directories(QFileInfo(m_configPath).absoluteDir().filesystemAbsolutePath(),
                                        error);
    if (error)
        return tl::unexpected(QString::fromStdString(error.message()));
    if (auto kept = keepWhatIsReplaced(configuration); !kept)
        return kept;
    return replaceFile(m_configPath, configuration.encode(), QFile::ReadOwner | QFile::WriteOwner);
}

}  // namespace tidemark
