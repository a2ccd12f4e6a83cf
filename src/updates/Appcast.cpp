#include "updates/Appcast.h"

#include <QSysInfo>
#include <QXmlStreamReader>
#include <algorithm>
#include <utility>

#include "updates/PlainText.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

constexpr auto sparkle = "http://www.andymatuschak.org/xml-namespaces/sparkle"_L1;
constexpr qsizetype mostItems = 1000;
constexpr int deepest = 64;
constexpr qsizetype longestNotes = 20'000;
constexpr qsizetype longestVersion = 100;

/// An item that is being read, with the members that decide whether and how it is used.
struct Draft {
    AppcastItem item;
    QString shortVersion;
    QString description;
    bool hasDescription = false;
    bool isPlainText = false;
    bool isOfChannel = false;
};

/// Accepts "linux", alone or with the processor as in "linux-x86_64", and no name at all.
bool isForThisSystem(QStringView os) {
    const QString name = os.trimmed().toString().toLower();
    return name.isEmpty() || name == "linux"_L1 || name == "linux-"_L1 + QSysInfo::currentCpuArchitecture();
}

ArchiveKind archiveKind(const QUrl& url, QStringView type) {
    const QString path = url.path().toLower();
    if (type == "application/vnd.appimage"_L1 || type == "application/x-appimage"_L1 ||
        path.endsWith(".appimage"_L1))
        return ArchiveKind::appImage;
    if (type == "application/vnd.debian.binary-package"_L1 || type == "application/x-deb"_L1 ||
        type == "application/x-debian-package"_L1 || path.endsWith(".deb"_L1))
        return ArchiveKind::package;
    return ArchiveKind::other;
}

/// A version in a form that is safe to show.
QString versionText(QStringView text) {
    return tidied(text.toString().simplified(), longestVersion);
}

class AppcastParser {
public:
    AppcastParser(const QByteArray& feed, QUrl feedUrl) : m_xml(feed), m_feedUrl(std::move(feedUrl)) {}

    std::optional<QList<AppcastItem>> parse() {
        bool hasChannel = false;
        if (nextChild() && m_xml.name() == "rss"_L1) {
            while (nextChild()) {
                if (m_xml.name() == "channel"_L1 && !hasChannel) {
                    hasChannel = true;
                    readChannel();
                } else {
                    skip();
                }
            }
        }
        // Reads to the end, because a document that was cut off may lack the newest release.
        while (!m_xml.atEnd())
            advance();
        if (m_xml.hasError() || !hasChannel)
            return std::nullopt;
        return std::move(m_items);
    }

private:
    /// Advances to the next child of the current element; false at the end of the element.
    bool nextChild() {
        while (!m_xml.atEnd()) {
            switch (advance()) {
                case QXmlStreamReader::StartElement:
                    return true;
                case QXmlStreamReader::EndElement:
                    return false;
                default:
                    break;
            }
        }
        return false;
    }

    /// Reads the next token. Document types, entities and deep nesting count as errors, because no appcast
    /// needs them.
    QXmlStreamReader::TokenType advance() {
        const auto token = m_xml.readNext();
        if (token == QXmlStreamReader::StartElement)
            ++m_depth;
        else if (token == QXmlStreamReader::EndElement)
            --m_depth;
        const bool isOwnEntity = token == QXmlStreamReader::DTD || token == QXmlStreamReader::EntityReference;
        if (isOwnEntity || m_depth > deepest)
            m_xml.raiseError();
        return m_xml.hasError() ? QXmlStreamReader::Invalid : token;
    }

    /// Skips the rest of the current element.
    void skip() {
        while (nextChild())
            skip();
    }

    /// The text of the current element and its descendants.
    QString readText() {
        QString text;
        const int depth = m_depth;
        while (!m_xml.atEnd()) {
            const auto token = advance();
            if (token == QXmlStreamReader::Characters)
                text += m_xml.text();
            else if (token == QXmlStreamReader::EndElement && m_depth < depth)
                break;
        }
        return text;
    }

    [[nodiscard]] bool isSparkle(QLatin1StringView name) const {
        return m_xml.namespaceUri() == sparkle && m_xml.name() == name;
    }

    [[nodiscard]] bool isPlain(QLatin1StringView name) const {
        return m_xml.namespaceUri().isEmpty() && m_xml.name() == name;
    }

    void readChannel() {
        while (nextChild())
            if (!isPlain("item"_L1))
                skip();
            else if (++m_itemCount > mostItems)
                m_xml.raiseError();
            else
                readItem();
    }

    void readItem() {
        Draft draft;
        // Only direct children, because enclosures at deeper levels are deltas between releases.
        while (nextChild())
            readMember(draft);
        AppcastItem& item = draft.item;
        if (item.version.isEmpty())
            item.version = draft.shortVersion;
        item.displayVersion = draft.shortVersion.isEmpty() ? item.version : draft.shortVersion;
        if (draft.isOfChannel || item.version.isEmpty() || m_xml.hasError())
            return;
        item.notes = draft.isPlainText ? tidied(draft.description, longestNotes)
                                       : plainTextOfHtml(draft.description, longestNotes);
        m_items.append(item);
    }

    void readMember(Draft& draft) {
        if (isPlain("enclosure"_L1)) {
            readEnclosure(draft);
            skip();
        } else if (isPlain("description"_L1)) {
            readDescription(draft);
        } else if (isSparkle("version"_L1)) {
            draft.item.version = versionText(readText());
        } else if (isSparkle("shortVersionString"_L1)) {
            draft.shortVersion = versionText(readText());
        } else if (isSparkle("minimumSystemVersion"_L1)) {
            draft.item.minimumSystemVersion = versionText(readText());
        } else if (isSparkle("channel"_L1)) {
            draft.isOfChannel = !readText().trimmed().isEmpty() || draft.isOfChannel;
        } else {
            skip();
        }
    }

    /// An English description is preferred to the first one.
    void readDescription(Draft& draft) {
        const QXmlStreamAttributes attributes = m_xml.attributes();
        const auto language = attributes.value("xml:lang"_L1);
        const bool isPlainText = attributes.value(sparkle, "format"_L1) == "plain-text"_L1;
        const QString text = readText();
        const bool isEnglish = language == "en"_L1 || language.startsWith("en-"_L1);
        if (draft.hasDescription && !isEnglish)
            return;
        draft.description = text;
        draft.isPlainText = isPlainText;
        draft.hasDescription = true;
    }

    void readEnclosure(Draft& draft) {
        const QXmlStreamAttributes attributes = m_xml.attributes();
        // Older feeds have the version here.
        if (draft.item.version.isEmpty())
            draft.item.version = versionText(attributes.value(sparkle, "version"_L1));
        if (draft.shortVersion.isEmpty())
            draft.shortVersion = versionText(attributes.value(sparkle, "shortVersionString"_L1));
        const QUrl url(attributes.value("url"_L1).trimmed().toString(), QUrl::StrictMode);
        if (url.isEmpty() || !url.isValid() || !isForThisSystem(attributes.value(sparkle, "os"_L1)))
            return;
        AppcastEnclosure enclosure;
        enclosure.url = m_feedUrl.resolved(url);
        enclosure.length = std::max(attributes.value("length"_L1).trimmed().toLongLong(), 0LL);
        enclosure.kind = archiveKind(enclosure.url, attributes.value("type"_L1).trimmed());
        enclosure.signature = attributes.value(sparkle, "edSignature"_L1).trimmed().toLatin1();
        draft.item.enclosures.append(enclosure);
    }

    QXmlStreamReader m_xml;
    QUrl m_feedUrl;
    QList<AppcastItem> m_items;
    qsizetype m_itemCount = 0;
    int m_depth = 0;
};

}  // namespace

std::optional<QList<AppcastItem>> parseAppcast(const QByteArray& feed, const QUrl& feedUrl) {
    return AppcastParser(feed, feedUrl).parse();
}

}  // namespace tidemark
