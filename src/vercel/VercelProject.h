#pragma once

#include <tl/expected.hpp>

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <optional>

#include "platform/base/JsonReader.h"

namespace tidemark {

/// One project of one account.
struct VercelProject {
    QString id;
    QString name;
    /// The id of the configured account that the project belongs to. Decoding is lenient: any value but text
    /// becomes the empty string.
    QString accountId;

    [[nodiscard]] static VercelProject decode(JsonReader& reader);
    [[nodiscard]] QJsonObject encode() const;
    bool operator==(const VercelProject&) const = default;
};

/// The project list in the form in which it is cached between runs: a compact JSON array.
[[nodiscard]] QByteArray encodeProjects(const QList<VercelProject>& projects);
[[nodiscard]] tl::expected<QList<VercelProject>, DecodingError> decodeProjects(const QByteArray& json);

/// One page of the project list.
struct ProjectsResponse {
    struct Pagination {
        /// The cursor of the next page; nothing on the last one.
        std::optional<qint64> next;

        bool operator==(const Pagination&) const = default;
    };

    QList<VercelProject> projects;
    std::optional<Pagination> pagination;

    [[nodiscard]] static tl::expected<ProjectsResponse, DecodingError> decode(const QByteArray& json);
    [[nodiscard]] QJsonObject encode() const;
    bool operator==(const ProjectsResponse&) const = default;
};

struct DomainEntry {
    QString name;
    std::optional<QString> gitBranch;
    std::optional<bool> verified;
    std::optional<QString> redirect;

    [[nodiscard]] static DomainEntry decode(JsonReader& reader);
    [[nodiscard]] QJsonObject encode() const;
    bool operator==(const DomainEntry&) const = default;
};

/// The domains of one project.
struct DomainsResponse {
    QList<DomainEntry> domains;

    [[nodiscard]] static tl::expected<DomainsResponse, DecodingError> decode(const QByteArray& json);
    [[nodiscard]] QJsonObject encode() const;
    bool operator==(const DomainsResponse&) const = default;
};

}  // namespace tidemark
