#include "sandbox/JsonText.h"

#include "platform/base/JsonText.h"

namespace tidemark::sandbox {

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
    return raw(name, jsonString(value));
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

}  // namespace tidemark::sandbox
