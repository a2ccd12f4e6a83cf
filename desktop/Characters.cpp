#include "desktop/Characters.h"

#include <QTextBoundaryFinder>

namespace tidemark {

QString firstCharacters(const QString& text, qsizetype count) {
    QTextBoundaryFinder boundaries(QTextBoundaryFinder::Grapheme, text);
    for (qsizetype i = 0; i < count; ++i) {
        if (boundaries.toNextBoundary() < 0) {
            return text;
        }
    }
    return text.first(boundaries.position());
}

}  // namespace tidemark
