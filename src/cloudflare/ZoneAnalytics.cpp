#include "cloudflare/ZoneAnalytics.h"

#include <QJsonDocument>
#include <algorithm>
#include <optional>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

/// The elements of an array of objects; none when any element is not an object.
QJsonArray objectsIn(const QJsonValue& value) {
    const QJsonArray array = value.toArray();
    const bool isUniform =
        std::all_of(array.begin(), array.end(), [](const QJsonValue& each) { return each.isObject(); });
    return isUniform ? array : QJsonArray();
}

std::optional<DayStats> dayFrom(const QJsonValue& group) {
    const QJsonValue date = group["dimensions"_L1]["date"_L1];
    const QJsonValue sum = group["sum"_L1];
    const QJsonValue uniq = group["uniq"_L1];
    if (!date.isString() || !sum.isObject() || !uniq.isObject())
        return std::nullopt;
    return DayStats{.date = date.toString(),
                    .pageViews = sum["pageViews"_L1].toInteger(),
                    .uniques = uniq["uniques"_L1].toInteger(),
                    .requests = sum["requests"_L1].toInteger(),
                    .threats = sum["threats"_L1].toInteger(),
                    .bytes = sum["bytes"_L1].toInteger()};
}

}  // namespace

Zone Zone::decode(JsonReader& reader) {
    return {.id = reader.requiredString("id"_L1), .name = reader.requiredString("name"_L1)};
}

tl::expected<QList<Zone>, DecodingError> decodeZones(const QByteArray& json) {
    return JsonReader::decodeObject(
        json, [](JsonReader& root) { return root.requiredArray("result"_L1, Zone::decode); });
}

tl::expected<QList<DayStats>, DecodingError> decodeDays(const QByteArray& json) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError)
        return tl::unexpected(DecodingError{DecodingError::Reason::malformed, {}});
    // A member that does not exist is undefined, and so are all members of it.
    const QJsonArray zones = objectsIn(document["data"_L1]["viewer"_L1]["zones"_L1]);
    QList<DayStats> days;
    for (const auto& group : objectsIn(zones.at(0)["httpRequests1dGroups"_L1]))
        if (auto day = dayFrom(group))
            days.append(*std::move(day));
    return days;
}

}  // namespace tidemark
