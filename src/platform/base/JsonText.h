#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QString>
#include <algorithm>

namespace tidemark {

/// `text` as a JSON string in UTF-8, quotes included. Half a surrogate pair, from a text that was cut, is
/// escaped and so preserved.
///
/// For documents whose members have to keep their order, and for documents that would take too long to build
/// as a QJsonDocument on the UI thread: texts without escapes are written several times as fast.
[[nodiscard]] inline QByteArray jsonString(const QString& text) {
    const bool isPlain =
        std::ranges::all_of(text, [](QChar c) { return c >= u' ' && c <= u'~' && c != u'"' && c != u'\\'; });
    if (isPlain)
        return '"' + text.toLatin1() + '"';
    // QJsonDocument writes no single strings, so an array is written and its brackets are cut off.
    const QByteArray array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
    return array.sliced(1, array.size() - 2);
}

}  // namespace tidemark
