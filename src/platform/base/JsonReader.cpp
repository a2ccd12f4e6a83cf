#include "platform/base/JsonReader.h"

#include <QJsonDocument>
#include <QStringList>
#include <utility>

namespace tidemark {

using namespace Qt::StringLiterals;

QString DecodingError::description() const {
    switch (reason) {
        case Reason::malformed:
            return u"The answer is not valid JSON."_s;
        case Reason::missing:
            return u"The answer could not be read: “%1” is missing."_s.arg(path);
        case Reason::wrongType:
            if (path.isEmpty())
                return u"The answer could not be read."_s;
            return u"The answer could not be read: “%1” has the wrong type."_s.arg(path);
    }
    Q_UNREACHABLE();
}

JsonReader::JsonReader(QJsonObject object, JsonReader* parent, QLatin1StringView member, qsizetype index)
    : m_object(std::move(object)), m_parent(parent), m_member(member), m_index(index) {}

QString JsonReader::requiredString(QLatin1StringView member) {
    auto value = optionalString(member);
    if (!value)
        fail(DecodingError::Reason::missing, member);
    return std::move(value).value_or(QString());
}

std::optional<QString> JsonReader::optionalString(QLatin1StringView member) {
    const QJsonValue value = m_object.value(member);
    if (isAbsent(value))
        return std::nullopt;
    if (!value.isString())
        fail(DecodingError::Reason::wrongType, member);
    return value.toString();
}

qint64 JsonReader::requiredInteger(QLatin1StringView member) {
    const auto value = optionalInteger(member);
    if (!value)
        fail(DecodingError::Reason::missing, member);
    return value.value_or(0);
}

std::optional<qint64> JsonReader::optionalInteger(QLatin1StringView member) {
    const QJsonValue value = m_object.value(member);
    if (isAbsent(value))
        return std::nullopt;
    // toInteger() gives its default for a number without an exact 64-bit value, so two different defaults
    // reveal one.
    const qint64 integer = value.toInteger(0);
    if (!value.isDouble() || integer != value.toInteger(1))
        fail(DecodingError::Reason::wrongType, member);
    return integer;
}

std::optional<bool> JsonReader::optionalBool(QLatin1StringView member) {
    const QJsonValue value = m_object.value(member);
    if (isAbsent(value))
        return std::nullopt;
    if (!value.isBool())
        fail(DecodingError::Reason::wrongType, member);
    return value.toBool();
}

std::optional<QList<QString>> JsonReader::optionalStrings(QLatin1StringView member) {
    const QJsonValue value = m_object.value(member);
    if (isAbsent(value))
        return std::nullopt;
    if (!value.isArray())
        fail(DecodingError::Reason::wrongType, member);
    const QJsonArray array = value.toArray();
    QList<QString> result;
    result.reserve(array.size());
    for (qsizetype i = 0; i < array.size(); ++i) {
        if (!array.at(i).isString())
            fail(DecodingError::Reason::wrongType, member, i);
        result.append(array.at(i).toString());
    }
    return result;
}

QString JsonReader::lenientString(QLatin1StringView member) const {
    return m_object.value(member).toString();
}

tl::expected<QJsonValue, DecodingError> JsonReader::parse(const QByteArray& json) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError)
        return tl::unexpected(DecodingError{DecodingError::Reason::malformed, {}});
    return document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
}

bool JsonReader::hasFailed() const {
    const JsonReader* root = this;
    while (root->m_parent)
        root = root->m_parent;
    return root->m_error.has_value();
}

void JsonReader::fail(DecodingError::Reason reason, QLatin1StringView member, qsizetype index) {
    const auto step = [](QLatin1StringView name, qsizetype place) {
        return place < 0 ? QString(name) : u"%1[%2]"_s.arg(name).arg(place);
    };
    QStringList steps{step(member, index)};
    JsonReader* root = this;
    for (; root->m_parent; root = root->m_parent)
        steps.prepend(step(root->m_member, root->m_index));
    if (!root->m_error)
        root->m_error = DecodingError{reason, steps.join(u'.')};
}

}  // namespace tidemark
