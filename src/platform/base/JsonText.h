#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QString>
#include <algorithm>

namespace tidemark {

/// `text` as a JSON string in UTF-8, quotes included. Half a surrogate pair, as a text has that was cut off,
/// is escaped and survives.
///
/// For documents whose members have an order of their own, or that are too long to build as a QJsonDocument
/// on the UI thread: most texts need no escapes, and those are written several times as fast.
[[nodiscard]] inline QByteArray jsonString(const QString& text) {
    const bool isPlain =
        std::ranges::all_of(text, [](QChar c) { return c >= u' ' && c <= u'~' && c != u'"' && c != u'\\'; });
    if (isPlain)
        return '"' + text.toLatin1() + '"';
    // An array of one, without its brackets.
    const QByteArray array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
    return array.sliced(1, array.size() - 2);
}

}  // namespace tidemark
