#include "vercel/VercelProject.h"

#include <QJsonArray>

#include "platform/base/JsonText.h"

namespace tidemark {

using namespace Qt::StringLiterals;

VercelProject VercelProject::decode(JsonReader& reader) {
    return {.id = reader.requiredString("id"_L1),
            .name = reader.requiredString("name"_L1),
            .accountId = reader.lenientString("accountId"_L1)};
}

QJsonObject VercelProject::encode() const {
    return {{u"id"_s, id}, {u"name"_s, name}, {u"accountId"_s, accountId}};
}

QByteArray encodeProjects(const QList<VercelProject>& projects) {
    QByteArray json = "[";
    for (const auto& project : projects) {
        if (json.size() > 1)
            json += ',';
        json += R"({"id":)" + jsonString(project.id) + R"(,"name":)" + jsonString(project.name) +
                R"(,"accountId":)" + jsonString(project.accountId) + '}';
    }
    return json += ']';
}

tl::expected<QList<VercelProject>, DecodingError> decodeProjects(const QByteArray& json) {
    return JsonReader::decodeArray(json, VercelProject::decode);
}

tl::expected<ProjectsResponse, DecodingError> ProjectsResponse::decode(const QByteArray& json) {
    return JsonReader::decodeObject(json, [](JsonReader& root) {
        return ProjectsResponse{
            .projects = root.requiredArray("projects"_L1, VercelProject::decode),
            .pagination = root.optionalObject("pagination"_L1, [](JsonReader& pagination) {
                return Pagination{.next = pagination.optionalInteger("next"_L1)};
            })};
    });
}

QJsonObject ProjectsResponse::encode() const {
    QJsonArray array;
    for (const auto& project : projects)
        array.append(project.encode());
    QJsonObject object{{u"projects"_s, array}};
    if (pagination)
        object[u"pagination"_s] =
            pagination->next ? QJsonObject{{u"next"_s, *pagination->next}} : QJsonObject();
    return object;
}

DomainEntry DomainEntry::decode(JsonReader& reader) {
    return {.name = reader.requiredString("name"_L1),
            .gitBranch = reader.optionalString("gitBranch"_L1),
            .verified = reader.optionalBool("verified"_L1),
            .redirect = reader.optionalString("redirect"_L1)};
}

QJsonObject DomainEntry::encode() const {
    QJsonObject object{{u"name"_s, name}};
    if (gitBranch)
        object[u"gitBranch"_s] = *gitBranch;
    if (verified)
        object[u"verified"_s] = *verified;
    if (redirect)
        object[u"redirect"_s] = *redirect;
    return object;
}

tl::expected<DomainsResponse, DecodingError> DomainsResponse::decode(const QByteArray& json) {
    return JsonReader::decodeObject(json, [](JsonReader& root) {
        return DomainsResponse{.domains = root.requiredArray("domains"_L1, DomainEntry::decode)};
    });
}

QJsonObject DomainsResponse::encode() const {
    QJsonArray array;
    for (const auto& domain : domains)
        array.append(domain.encode());
    return {{u"domains"_s, array}};
}

}  // namespace tidemark
