#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace tidemark::sandbox {

/// Writes JSON front to back. The big lists are rendered with it: several times as fast as a tree of values
/// that is built, sorted and thrown away. Names are written as they are.
class JsonText final {
public:
    /// The bytes so far; complete once everything opened is closed.
    [[nodiscard]] const QByteArray& bytes() const { return m_bytes; }

    /// Inside an array the name stays empty.
    JsonText& openObject(QByteArrayView name = {});
    JsonText& closeObject();
    JsonText& openArray(QByteArrayView name = {});
    JsonText& closeArray();

    /// A null text is written as null.
    JsonText& text(QByteArrayView name, const QString& value);
    JsonText& texts(QByteArrayView name, const QStringList& values);
    JsonText& number(QByteArrayView name, qint64 value);
    JsonText& flag(QByteArrayView name, bool value);
    JsonText& null(QByteArrayView name);

    /// JSON made elsewhere.
    JsonText& raw(QByteArrayView name, QByteArrayView json);

private:
    void start(QByteArrayView name);

    QByteArray m_bytes;
};

}  // namespace tidemark::sandbox
