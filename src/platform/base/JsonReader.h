#pragma once

#include <tl/expected.hpp>

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QString>
#include <optional>
#include <type_traits>

namespace tidemark {

/// Why a document could not be decoded.
struct DecodingError {
    enum class Reason : quint8 {
        malformed,  ///< not JSON at all
        missing,    ///< a required member is missing or null
        wrongType,  ///< a member has another type than it must have
    };

    Reason reason = Reason::malformed;
    /// Where in the document, as in "deployments[2].uid"; empty for the document itself.
    QString path;

    /// A short English sentence for the user.
    [[nodiscard]] QString description() const;
    bool operator==(const DecodingError&) const = default;
};

/// Reads the members of one JSON object. The first failure anywhere in a document is kept at its root and
/// makes the whole document fail. Values that are read after it must not be used.
///
/// "Optional" members may be missing or null, but fail like required ones when they have another type.
/// Integers must have an exact 64-bit value.
class JsonReader {
public:
    [[nodiscard]] QString requiredString(QLatin1StringView member);
    [[nodiscard]] std::optional<QString> optionalString(QLatin1StringView member);
    [[nodiscard]] qint64 requiredInteger(QLatin1StringView member);
    [[nodiscard]] std::optional<qint64> optionalInteger(QLatin1StringView member);
    [[nodiscard]] std::optional<bool> optionalBool(QLatin1StringView member);
    [[nodiscard]] std::optional<QList<QString>> optionalStrings(QLatin1StringView member);

    /// The text, or the empty string when the member is missing or anything but text.
    [[nodiscard]] QString lenientString(QLatin1StringView member) const;

    template <typename Decode>
    [[nodiscard]] auto requiredObject(QLatin1StringView member, Decode decode) {
        auto value = optionalObject(member, decode);
        if (!value)
            fail(DecodingError::Reason::missing, member);
        return std::move(value).value_or(typename decltype(value)::value_type{});
    }

    template <typename Decode>
    [[nodiscard]] auto optionalObject(QLatin1StringView member, Decode decode)
        -> std::optional<std::invoke_result_t<Decode, JsonReader&>> {
        const QJsonValue value = m_object.value(member);
        if (isAbsent(value))
            return std::nullopt;
        if (!value.isObject())
            fail(DecodingError::Reason::wrongType, member);
        JsonReader reader(value.toObject(), this, member, -1);
        return decode(reader);
    }

    /// The decoded elements. Each must be an object.
    template <typename Decode>
    [[nodiscard]] auto requiredArray(QLatin1StringView member, Decode decode)
        -> QList<std::invoke_result_t<Decode, JsonReader&>> {
        const QJsonValue value = m_object.value(member);
        if (isAbsent(value))
            fail(DecodingError::Reason::missing, member);
        else if (!value.isArray())
            fail(DecodingError::Reason::wrongType, member);
        return elements(value.toArray(), member, decode);
    }

    /// Like `requiredArray`, but gives nothing when the member or any element cannot be read, and the
    /// document does not fail.
    template <typename Decode>
    [[nodiscard]] auto lenientArray(QLatin1StringView member, Decode decode) const
        -> std::optional<QList<std::invoke_result_t<Decode, JsonReader&>>> {
        const QJsonValue value = m_object.value(member);
        if (!value.isArray())
            return std::nullopt;
        JsonReader root({}, nullptr, {}, -1);
        auto values = root.elements(value.toArray(), member, decode);
        if (root.m_error)
            return std::nullopt;
        return values;
    }

    /// Decodes a document whose top level is an object.
    template <typename Decode>
    [[nodiscard]] static auto decodeObject(const QByteArray& json, Decode decode)
        -> tl::expected<std::invoke_result_t<Decode, JsonReader&>, DecodingError> {
        const auto document = parse(json);
        if (!document)
            return tl::unexpected(document.error());
        if (!document->isObject())
            return tl::unexpected(DecodingError{DecodingError::Reason::wrongType, {}});
        JsonReader root(document->toObject(), nullptr, {}, -1);
        auto value = decode(root);
        if (root.m_error)
            return tl::unexpected(*root.m_error);
        return value;
    }

    /// Decodes a document whose top level is an array of objects.
    template <typename Decode>
    [[nodiscard]] static auto decodeArray(const QByteArray& json, Decode decode)
        -> tl::expected<QList<std::invoke_result_t<Decode, JsonReader&>>, DecodingError> {
        const auto document = parse(json);
        if (!document)
            return tl::unexpected(document.error());
        if (!document->isArray())
            return tl::unexpected(DecodingError{DecodingError::Reason::wrongType, {}});
        JsonReader root({}, nullptr, {}, -1);
        auto values = root.elements(document->toArray(), {}, decode);
        if (root.m_error)
            return tl::unexpected(*root.m_error);
        return values;
    }

private:
    JsonReader(QJsonObject object, JsonReader* parent, QLatin1StringView member, qsizetype index);

    [[nodiscard]] static tl::expected<QJsonValue, DecodingError> parse(const QByteArray& json);
    [[nodiscard]] static bool isAbsent(const QJsonValue& value) {
        return value.isUndefined() || value.isNull();
    }
    [[nodiscard]] bool hasFailed() const;
    void fail(DecodingError::Reason reason, QLatin1StringView member, qsizetype index = -1);

    template <typename Decode>
    [[nodiscard]] auto elements(const QJsonArray& array, QLatin1StringView member, Decode decode)
        -> QList<std::invoke_result_t<Decode, JsonReader&>> {
        QList<std::invoke_result_t<Decode, JsonReader&>> result;
        result.reserve(array.size());
        for (qsizetype i = 0; i < array.size() && !hasFailed(); ++i) {
            const QJsonValue element = array.at(i);
            if (!element.isObject())
                fail(DecodingError::Reason::wrongType, member, i);
            JsonReader reader(element.toObject(), this, member, i);
            result.append(decode(reader));
        }
        return result;
    }

    QJsonObject m_object;
    JsonReader* m_parent;
    QLatin1StringView m_member;
    qsizetype m_index;
    /// Set in the root only.
    std::optional<DecodingError> m_error;
};

}  // namespace tidemark
