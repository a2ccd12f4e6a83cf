#include "sandbox/JsonText.h"

namespace tidemark::sandbox {

namespace {

/// A character that cannot stand for itself: a control character, or half a pair.
QByteArray escaped(char16_t unit) {
    return "\\u" + QByteArray::number(unit, 16).rightJustified(4, '0');
}

}  // namespace

JsonText& JsonText::openObject(QByteArrayView name) {
    start(name);
    m_bytes += '{';
    return *this;
}

JsonText& JsonText::closeObject() {
    m_bytes += '}';
    return *this;
}

JsonText& JsonText::openArray(QByteArrayView name) {
    start(name);
    m_bytes += '[';
    return *this;
}

JsonText& JsonText::closeArray() {
    m_bytes += ']';
    return *this;
}

JsonText& JsonText::text(QByteArrayView name, const QString& value) {
    if (value.isNull())
        return null(name);
    start(name);
    quote(value);
    return *this;
}

JsonText& JsonText::texts(QByteArrayView name, const QStringList& values) {
    openArray(name);
    for (const QString& value : values)
        text({}, value);
    return closeArray();
}

JsonText& JsonText::number(QByteArrayView name, qint64 value) {
    return raw(name, QByteArray::number(value));
}

JsonText& JsonText::flag(QByteArrayView name, bool value) {
    return raw(name, value ? "true" : "false");
}

JsonText& JsonText::null(QByteArrayView name) {
    return raw(name, "null");
}

JsonText& JsonText::raw(QByteArrayView name, QByteArrayView json) {
    start(name);
    m_bytes += json;
    return *this;
}

void JsonText::start(QByteArrayView name) {
    if (!m_bytes.isEmpty() && !m_bytes.endsWith('{') && !m_bytes.endsWith('['))
        m_bytes += ',';
    if (name.isEmpty())
        return;
    m_bytes += '"';
    m_bytes += name;
    m_bytes += "\":";
}

void JsonText::quote(QStringView text) {
    m_bytes += '"';
    qsizetype done = 0;
    for (qsizetype place = 0; place < text.size(); ++place) {
        const QChar unit = text.at(place);
        const bool pair =
            unit.isHighSurrogate() && place + 1 < text.size() && text.at(place + 1).isLowSurrogate();
        if (pair) {
            ++place;
            continue;
        }
        const bool mark = unit == u'"' || unit == u'\\';
        if (!mark && unit >= u' ' && !unit.isSurrogate())
            continue;
        m_bytes += text.sliced(done, place - done).toUtf8();
        m_bytes += mark ? '\\' + QByteArray(1, unit.toLatin1()) : escaped(unit.unicode());
        done = place + 1;
    }
    m_bytes += text.sliced(done).toUtf8();
    m_bytes += '"';
}

}  // namespace tidemark::sandbox
