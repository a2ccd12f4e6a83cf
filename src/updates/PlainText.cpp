#include "updates/PlainText.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/base/Characters.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array paragraphs{"p"_L1,  "div"_L1, "h1"_L1, "h2"_L1,  "h3"_L1,         "h4"_L1,   "h5"_L1,
                                "h6"_L1, "ul"_L1,  "ol"_L1, "pre"_L1, "blockquote"_L1, "table"_L1};
constexpr std::array lines{"br"_L1, "li"_L1, "tr"_L1, "dt"_L1, "dd"_L1, "hr"_L1};
constexpr std::array hidden{"script"_L1, "style"_L1, "head"_L1, "title"_L1};

constexpr std::array<std::pair<QLatin1StringView, char16_t>, 14> entities{{{"amp"_L1, u'&'},
                                                                           {"lt"_L1, u'<'},
                                                                           {"gt"_L1, u'>'},
                                                                           {"quot"_L1, u'"'},
                                                                           {"apos"_L1, u'\''},
                                                                           {"nbsp"_L1, u' '},
                                                                           {"ndash"_L1, u'–'},
                                                                           {"mdash"_L1, u'—'},
                                                                           {"hellip"_L1, u'…'},
                                                                           {"bull"_L1, u'•'},
                                                                           {"lsquo"_L1, u'‘'},
                                                                           {"rsquo"_L1, u'’'},
                                                                           {"ldquo"_L1, u'“'},
                                                                           {"rdquo"_L1, u'”'}}};

bool isOneOf(const auto& names, QStringView name) {
    return std::ranges::any_of(names, [name](QLatin1StringView each) { return name == each; });
}

/// Whether the "<" at the beginning of `text` begins a tag, a comment or a declaration.
bool beginsTag(QStringView text) {
    if (text.size() < 2 || text.front() != u'<')
        return false;
    const QChar next = text.at(1);
    return next.isLetter() || next == u'/' || next == u'!' || next == u'?';
}

enum class Whitespace : quint8 { collapsed, kept };

/// Reads the fragment in one pass.
class HtmlReader {
public:
    HtmlReader(QStringView html, Whitespace whitespace) : m_rest(html), m_whitespace(whitespace) {}

    QString read() {
        while (!m_rest.isEmpty())
            if (beginsTag(m_rest))
                readTag();
            else if (m_rest.front() == u'&')
                readEntity();
            else
                add(take());
        return std::move(m_text);
    }

private:
    QChar take() {
        const QChar c = m_rest.front();
        m_rest = m_rest.sliced(1);
        return c;
    }

    void dropUntil(const QString& end) {
        const qsizetype place = m_rest.indexOf(end, 0, Qt::CaseInsensitive);
        m_rest = place < 0 ? QStringView() : m_rest.sliced(place + end.size());
    }

    void readTag() {
        if (m_rest.startsWith("<!--"_L1)) {
            dropUntil(u"-->"_s);
            return;
        }
        const qsizetype end = m_rest.indexOf(u'>');
        QStringView tag = m_rest.sliced(1, (end < 0 ? m_rest.size() : end) - 1);
        m_rest = end < 0 ? QStringView() : m_rest.sliced(end + 1);
        const bool isEnd = tag.startsWith(u'/');
        if (isEnd)
            tag = tag.sliced(1);
        const auto isNameEnd = [](QChar c) { return !c.isLetterOrNumber(); };
        const auto nameEnd = std::find_if(tag.begin(), tag.end(), isNameEnd);
        apply(tag.first(nameEnd - tag.begin()).toString().toLower(), isEnd);
    }

    void apply(const QString& name, bool isEnd) {
        if (isOneOf(hidden, name) && !isEnd)
            dropUntil(u"</"_s + name + u'>');
        else if (isOneOf(paragraphs, name))
            breakLines(2);
        else if (isOneOf(lines, name) && !(isEnd && name == "li"_L1))
            breakLines(1);
        if (name == "li"_L1 && !isEnd)
            m_text += u"• "_s;
    }

    void readEntity() {
        const qsizetype end = m_rest.first(std::min<qsizetype>(m_rest.size(), 12)).indexOf(u';');
        const QStringView name = end < 0 ? QStringView() : m_rest.sliced(1, end - 1);
        const char32_t c = character(name);
        if (c == 0) {
            add(take());
            return;
        }
        m_rest = m_rest.sliced(end + 1);
        m_text += QString::fromUcs4(&c, 1);
    }

    /// 0 for an unknown entity.
    static char32_t character(QStringView name) {
        if (name.startsWith(u'#')) {
            const bool isHex = name.size() > 1 && name.at(1).toLower() == u'x';
            const uint code = name.sliced(isHex ? 2 : 1).toUInt(nullptr, isHex ? 16 : 10);
            const bool isCharacter = code <= QChar::LastValidCodePoint && !QChar::isSurrogate(code);
            return isCharacter ? code : 0;
        }
        const auto* found =
            std::ranges::find_if(entities, [name](const auto& entity) { return name == entity.first; });
        return found == entities.end() ? 0 : found->second;
    }

    void add(QChar c) {
        if (c.isSpace() && m_whitespace == Whitespace::collapsed) {
            if (!m_text.isEmpty() && !m_text.endsWith(u' ') && !m_text.endsWith(u'\n'))
                m_text += u' ';
        } else {
            m_text += c;
        }
    }

    void breakLines(int count) {
        while (m_text.endsWith(u' '))
            m_text.chop(1);
        if (m_text.isEmpty())
            return;
        while (count > 0 && !m_text.endsWith(QString(count, u'\n')))
            m_text += u'\n';
    }

    QStringView m_rest;
    Whitespace m_whitespace;
    QString m_text;
};

bool hasTags(QStringView text) {
    for (qsizetype i = text.indexOf(u'<'); i >= 0; i = text.indexOf(u'<', i + 1))
        if (beginsTag(text.sliced(i)))
            return true;
    return false;
}

}  // namespace

QString plainTextOfHtml(const QString& html, qsizetype limit) {
    // Limits the time for a hostile text. Twenty characters of HTML for each of its text are ample.
    const QStringView text = QStringView(html).first(std::min(html.size(), limit * 20));
    return tidied(HtmlReader(text, hasTags(text) ? Whitespace::collapsed : Whitespace::kept).read(), limit);
}

QString tidied(const QString& text, qsizetype limit) {
    QString result = text.trimmed();
    result.replace(u"\r\n"_s, u"\n"_s).replace(u'\r', u'\n').replace(u'\t', u' ');
    const auto isUnwanted = [](QChar c) {
        return (c.category() == QChar::Other_Control && c != u'\n') || turnsDirection(c);
    };
    result.removeIf(isUnwanted);
    return elided(result, limit);
}

}  // namespace tidemark
