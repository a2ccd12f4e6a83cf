#pragma once

#include <QString>

namespace tidemark {

/// The first `count` characters as people count them: an emoji of several code points, or a letter with its
/// accents, is one. The text itself when it has no more.
[[nodiscard]] QString firstCharacters(const QString& text, qsizetype count);

}  // namespace tidemark
