#include "platform/base/Characters.h"

#include <QTextBoundaryFinder>
#include <algorithm>

namespace tidemark {
namespace {

/// In code units. The longest emoji in use have about twenty.
constexpr qsizetype longestCharacter = 32;
constexpr qsizetype longestLine = 300;

bool endsLine(QChar character) {
    const QChar::Category category = character.category();
    return category == QChar::Other_Control || category == QChar::Separator_Line ||
           category == QChar::Separator_Paragraph;
}

}  // namespace

QString firstCharacters(const QString& text, qsizetype count) {
    // The result cannot be longer, so the rest is not searched for boundaries.
    const QString start = text.first(std::min(text.size(), (count + 1) * longestCharacter));
    QTextBoundaryFinder boundaries(QTextBoundaryFinder::Grapheme, start);
    qsizetype end = 0;
    for (qsizetype i = 0; i < count && end < start.size(); ++i) {
        const qsizetype next = boundaries.toNextBoundary();
        if (next - end > longestCharacter) {
            end += longestCharacter;
            return start.first(start.at(end).isLowSurrogate() ? end - 1 : end);
        }
        end = next;
    }
    return text.first(end);
}

QString elided(const QString& text, qsizetype count) {
    const QString start = firstCharacters(text, count);
    return start.size() == text.size() ? text : start + QChar(0x2026);
}

bool turnsDirection(QChar character) {
    const ushort code = character.unicode();
    const bool isEmbedding = code >= 0x202a && code <= 0x202e;
    const bool isIsolate = code >= 0x2066 && code <= 0x2069;
    return isEmbedding || isIsolate;
}

QString singleLine(const QString& text) {
    QString line = elided(text, longestLine);
    line.removeIf(turnsDirection);
    std::ranges::replace_if(line, endsLine, u' ');
    return line;
}

}  // namespace tidemark
