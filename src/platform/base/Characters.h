#pragma once

#include <QString>

namespace tidemark {

/// The first `count` characters (grapheme clusters: an emoji of several code points or a letter with its
/// accents is one). The result also ends inside a cluster of more than 32 code units, such as a letter with
/// dozens of accents, because drawing that can take seconds.
[[nodiscard]] QString firstCharacters(const QString& text, qsizetype count);

/// The text; if it has more than `count` characters, the first `count` and an ellipsis.
[[nodiscard]] QString elided(const QString& text, qsizetype count);

/// The text as panels and notifications can show it: on one line, elided after 300 characters, with spaces in
/// place of control characters and without characters that turn the direction of writing.
[[nodiscard]] QString singleLine(const QString& text);

/// Whether the character changes the direction of the text after it, which can make a text look like another
/// one: the embeddings, overrides and isolates of Unicode's bidirectional algorithm and their ends.
[[nodiscard]] bool turnsDirection(QChar character);

}  // namespace tidemark
