#pragma once

#include <QString>

namespace tidemark {

/// The text of an HTML fragment: paragraphs and list entries on lines of their own, at most one empty line
/// between them. A text without any tag keeps its line breaks. Like `tidied` otherwise.
[[nodiscard]] QString plainTextOfHtml(const QString& html, qsizetype limit);

/// The text without control characters and marks that turn the direction of writing, but with its line
/// breaks; no white space around it, and no more than `limit` characters.
[[nodiscard]] QString tidied(const QString& text, qsizetype limit);

}  // namespace tidemark
