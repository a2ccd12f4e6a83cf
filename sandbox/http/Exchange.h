#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <utility>

class QJsonObject;

namespace tidemark::sandbox {

/// A request as it came in, apart from any transport.
struct Request {
    QByteArray method{};
    /// As sent, percent-encoded, without the query.
    QString path{};
    /// Decoded, in the order sent.
    QList<std::pair<QString, QString>> query{};
    QByteArray authorization{};
    QByteArray contentType{};
    QByteArray body{};

    /// The first value of that name; null when there is none.
    [[nodiscard]] QString queryValue(QLatin1StringView name) const;

    /// The path's decoded segments: "/a/b%20c" gives "a", "b c".
    [[nodiscard]] QStringList segments() const;

    /// The token of "Authorization: Bearer …"; empty for any other header.
    [[nodiscard]] QString bearerToken() const;
};

/// How the bytes of an answer reach the client.
enum class Delivery : quint8 {
    whole,
    never,    ///< the connection stays open in silence
    drip,     ///< in small pieces
    cut,      ///< closed in the middle of the body
    reset,    ///< the connection is reset before the first byte
    endless,  ///< the body, then white space for ever
};

/// An answer, apart from any transport.
struct Reply {
    int status = 200;
    QByteArray contentType = "application/json; charset=utf-8";
    QByteArray body{};
    QList<std::pair<QByteArray, QByteArray>> headers{};
    Delivery delivery = Delivery::whole;
    /// Before the answer, or between two pieces of a drip.
    int pauseMs = 0;
    /// Bytes of a piece of a drip.
    qsizetype dripSize = 1;

    [[nodiscard]] static Reply json(const QJsonObject& document, int status = 200);
};

}  // namespace tidemark::sandbox
