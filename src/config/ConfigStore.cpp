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

std::optional<QByteArray> ConfigStore::readFile() const {
    // Reading a pipe or a device would never end.
    const QFileInfo info(m_configPath);
    QFile file(m_configPath);
    if (!info.isFile() || info.size() > maximumFileSize || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

std::optional<AppConfiguration> ConfigStore::load(Keychain::Prompting prompting) const {
    const KeychainSession session(*m_keychain, prompting);
    const auto content = readFile();
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
        account.apiToken = tokenOf(tokenAccount(account));
    configuration->cloudflareToken = tokenOf(cloudflareTokenAccount);
    if (!configuration->hasToken() || m_keychain->wasLost())
        return std::nullopt;
    return *std::move(configuration);
}

QString ConfigStore::loadCloudflareToken(Keychain::Prompting prompting) const {
    const KeychainSession session(*m_keychain, prompting);
    return tokenOf(cloudflareTokenAccount);
}

QString ConfigStore::tokenOf(const QString& account) const {
    return KeychainHelper::loadToken(*m_keychain, account).value_or(QString());
}

tl::expected<void, QString> ConfigStore::keepWhatIsReplaced(const AppConfiguration& configuration) const {
    if (!QFileInfo(m_configPath).isFile() || QFileInfo(m_configPath).size() == 0)
        return {};
    if (const auto content = readFile()) {
        const auto former = AppConfiguration::decode(*content, [](const VercelAccount&) {});
        const auto livesOn = [&configuration](const VercelAccount& account) {
            return std::ranges::find(configuration.accounts, account.id, &VercelAccount::id) !=
                   configuration.accounts.cend();
        };
        if (former && std::ranges::any_of(former->accounts, livesOn))
            return {};
    }
    QString backup = m_configPath + u".bak"_s;
    for (int number = 2; QFileInfo::exists(backup); ++number)
        backup = m_configPath + u".bak%1"_s.arg(number);
    QFile file(m_configPath);
    // A file without permission to read it can still be renamed.
    if (!file.copy(backup) && !file.rename(backup))
        return tl::unexpected(file.errorString());
    return {};
}

tl::expected<void, QString> ConfigStore::save(const AppConfiguration& configuration,
                                              EmptyCloudflareToken emptyToken) const {
    const KeychainSession session(*m_keychain, Keychain::Prompting::allowed);
    for (const auto& account : configuration.accounts)
        KeychainHelper::save(*m_keychain, account.apiToken, tokenAccount(account));
    if (!configuration.cloudflareToken.isEmpty() || emptyToken == EmptyCloudflareToken::replaces)
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
