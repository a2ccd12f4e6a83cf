#include "sandbox/UpdateService.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>

namespace tidemark::sandbox {

namespace {

using namespace Qt::StringLiterals;

constexpr qsizetype usualSize = 200'000;
constexpr qsizetype largestSize = qsizetype{64} * 1024 * 1024;
constexpr auto updatesRoot = "/updates/"_L1;

constexpr std::array variants{"appcast"_L1,   "unsigned"_L1,  "tampered"_L1,   "wrong-key"_L1,   "cut"_L1,
                              "slow"_L1,      "short"_L1,     "long"_L1,       "missing"_L1,     "older"_L1,
                              "oversized"_L1, "malformed"_L1, "prerelease"_L1, "newer-system"_L1};

constexpr auto notes = R"(
<h2>What is new</h2>
<ul>
  <li>The popover opens faster on machines with many projects.</li>
  <li>Analytics remember which cards were open.</li>
  <li>A build that is cancelled &amp; started again no longer notifies twice.</li>
</ul>
<p>Thank you for your reports.</p>
)"_L1;

/// Feed and archive tell each other nothing but this.
struct Wish {
    QString variant;
    qsizetype size = usualSize;
    int seconds = 0;
};

Wish wishOf(const Request& request, const QString& variant) {
    Wish wish{.variant = variant, .seconds = variant == "slow"_L1 ? 20 : 0};
    if (const int size = request.queryValue("size"_L1).toInt(); size > 0)
        wish.size = std::min<qsizetype>(size, largestSize);
    if (const int seconds = request.queryValue("seconds"_L1).toInt(); seconds > 0)
        wish.seconds = std::min(seconds, 3600);
    return wish;
}

QString versionOf(const QString& variant) {
    if (variant == "older"_L1)
        return u"0.0.9"_s;
    return variant == "prerelease"_L1 ? u"9.1.0-beta.1"_s : u"9.1.0"_s;
}

}  // namespace

class UpdateService::SigningKey final {
public:
    SigningKey() : m_key(EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519"), EVP_PKEY_free) {}

    [[nodiscard]] QByteArray publicKey() const {
        QByteArray bytes(32, '\0');
        size_t size = 32;
        EVP_PKEY_get_raw_public_key(m_key.get(), data(bytes), &size);
        return bytes;
    }

    [[nodiscard]] QByteArray signature(const QByteArray& archive) const {
        const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(),
                                                                              EVP_MD_CTX_free);
        QByteArray bytes(64, '\0');
        size_t size = 64;
        EVP_DigestSignInit(context.get(), nullptr, nullptr, nullptr, m_key.get());
        EVP_DigestSign(context.get(), data(bytes), &size,
                       reinterpret_cast<const unsigned char*>(archive.constData()),
                       static_cast<size_t>(archive.size()));
        return bytes;
    }

private:
    static unsigned char* data(QByteArray& bytes) { return reinterpret_cast<unsigned char*>(bytes.data()); }

    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> m_key;
};

struct UpdateService::Release {
    Wish wish;
    QString version;
    QByteArray archive;
};

UpdateService::UpdateService()
    : m_key(std::make_unique<SigningKey>()), m_wrongKey(std::make_unique<SigningKey>()) {}

UpdateService::~UpdateService() = default;

bool UpdateService::serves(const QString& requestPath) {
    return requestPath.startsWith(updatesRoot);
}

QString UpdateService::publicKey() const {
    return QString::fromLatin1(m_key->publicKey().toBase64());
}

QByteArray UpdateService::archive(const QString& version, qsizetype size) {
    const QByteArray script = "#!/bin/sh\necho 'Tidemark " + version.toLatin1() + "'\nexit 0\n";
    return script.leftJustified(size, '#');
}

Reply UpdateService::answer(const Request& request) const {
    if (request.method != "GET")
        return {.status = 405};
    if (request.path == updatesRoot + u"public-key"_s)
        return {.contentType = "text/plain", .body = publicKey().toLatin1()};
    return request.path.endsWith(".xml"_L1) ? feed(request) : archiveReply(request);
}

Reply UpdateService::feed(const Request& request) const {
    const QString variant = request.path.sliced(updatesRoot.size()).chopped(4);
    if (std::ranges::none_of(variants, [&](QLatin1StringView each) { return variant == each; }))
        return {.status = 404};
    Release release{.wish = wishOf(request, variant), .version = versionOf(variant)};
    release.archive = archive(release.version, release.wish.size);
    Reply reply{.contentType = "application/rss+xml; charset=utf-8", .body = document(release)};
    if (variant == "oversized"_L1)
        reply.body.append(QByteArray(qsizetype{2} * 1024 * 1024, ' '));
    if (variant == "malformed"_L1)
        reply.body.truncate(reply.body.size() / 2);
    return reply;
}

QByteArray UpdateService::document(const Release& release) const {
    const bool isForNewer = release.wish.variant == "newer-system"_L1;
    const QByteArray version = release.version.toLatin1();
    return R"(<?xml version="1.0" encoding="utf-8"?>
<rss version="2.0" xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle">
<channel>
<title>Tidemark</title>
<item>
<title>Tidemark )" +
           version + "</title>\n<sparkle:version>" + version + "</sparkle:version>\n" +
           (isForNewer ? "<sparkle:minimumSystemVersion>99.0</sparkle:minimumSystemVersion>\n" : "") +
           "<description><![CDATA[" + notes.data() + "]]></description>\n" +
           enclosure(release, "x86_64.AppImage"_L1, "application/vnd.appimage"_L1) +
           enclosure(release, "amd64.deb"_L1, "application/vnd.debian.binary-package"_L1) +
           "</item>\n</channel>\n</rss>\n";
}

QByteArray UpdateService::enclosure(const Release& release, QLatin1StringView suffix,
                                    QLatin1StringView type) const {
    const auto& [wish, version, archive] = release;
    const QString url = updatesRoot + wish.variant + "/tidemark-"_L1 + version + u'_' + suffix +
                        u"?size=%1&amp;seconds=%2"_s.arg(wish.size).arg(wish.seconds);
    const SigningKey& key = wish.variant == "wrong-key"_L1 ? *m_wrongKey : *m_key;
    const QByteArray signature = wish.variant == "unsigned"_L1
                                     ? QByteArray()
                                     : " sparkle:edSignature=\"" + key.signature(archive).toBase64() + '"';
    return "<enclosure url=\"" + url.toLatin1() + "\" length=\"" + QByteArray::number(archive.size()) +
           "\" type=\"" + QByteArray(type.data()) + '"' + signature + "/>\n";
}

/// "/updates/<variant>/tidemark-<version>_<suffix>"
Reply UpdateService::archiveReply(const Request& request) {
    const QStringList segments = request.segments();
    if (segments.size() != 3 || segments.at(1) == "missing"_L1)
        return {.status = 404};
    const Wish wish = wishOf(request, segments.at(1));
    const QString version = segments.at(2).section(u'_', 0, 0).section(u'-', 1);
    Reply reply{.contentType = "application/octet-stream", .body = archive(version, wish.size)};
    if (wish.variant == "tampered"_L1)
        reply.body.back() = '!';
    else if (wish.variant == "short"_L1)
        reply.body.chop(1);
    else if (wish.variant == "long"_L1)
        reply.body.append('#');
    else if (wish.variant == "cut"_L1)
        reply.delivery = Delivery::cut;
    if (wish.seconds > 0) {
        constexpr int pieces = 100;
        reply.delivery = Delivery::drip;
        reply.dripSize = std::max<qsizetype>(reply.body.size() / pieces, 1);
        reply.pauseMs = wish.seconds * 1000 / pieces;
    }
    return reply;
}

}  // namespace tidemark::sandbox
