#pragma once

#include <QString>

namespace tidemark {

/// The text of an HTML fragment, after `tidied`. Paragraphs and list entries are on separate lines with at
/// most one empty line between them. A text without tags keeps its line breaks.
///
/// Qt's converter (QTextDocument) is not used, because it takes 54 seconds for 160 KB of nested tags. This
/// one looks at each character once.
[[nodiscard]] QString plainTextOfHtml(const QString& html, qsizetype limit);

/// The trimmed text without control characters other than line breaks and without characters that turn the
/// direction of writing, elided after `limit` characters.
[[nodiscard]] QString tidied(const QString& text, qsizetype limit);

}  // namespace tidemark
