#pragma once

#include <QString>

namespace tidemark {

/// The first `count` characters as people count them: an emoji of several code points, or a letter with its
/// accents, is one. The text itself when it has no more. What nobody would call a character any more (some
/// dozen accents on one letter) ends there as well: drawing it can take seconds.
[[nodiscard]] QString firstCharacters(const QString& text, qsizetype count);

/// The text, or its first `count` characters and an ellipsis if it has more.
[[nodiscard]] QString elided(const QString& text, qsizetype count);

/// The text as panels and notifications can show it: one line of 300 characters at most, cut with an
/// ellipsis, without control characters and without those that reverse what follows them.
[[nodiscard]] QString singleLine(const QString& text);

/// Whether the character turns the direction of the text after it, so that a text looks like another: the
/// embeddings, overrides and isolates of Unicode's bidirectional algorithm and their ends.
[[nodiscard]] bool turnsDirection(QChar character);

}  // namespace tidemark
