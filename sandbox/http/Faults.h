#pragma once

#include <QByteArray>
#include <QList>
#include <QMetaEnum>
#include <QString>
#include <functional>
#include <mutex>
#include <optional>

#include "sandbox/http/Exchange.h"

namespace tidemark::sandbox {

Q_NAMESPACE

/// The names are those of the control routes.
enum class FaultKind : quint8 {
    status,    ///< `status` with the service's kind of error document, or with `body`
    stall,     ///< accepted, never answered
    delay,     ///< the true answer after `pauseMs`
    drip,      ///< the true answer, a byte every `pauseMs` (1 s when 0)
    cut,       ///< the true answer, closed half-way through the body
    reset,     ///< accepted, then the connection is reset
    garbage,   ///< 200 with a body that is no JSON
    huge,      ///< the true answer followed by white space up to `bytes`; without end when 0
    bomb,      ///< `bytes` of white space (64 MB when 0), compressed a thousand to one
    redirect,  ///< `status` (302 unless it is another 3xx) to `location`
};
Q_ENUM_NS(FaultKind)

/// Something that goes wrong, and for which requests.
struct Fault {
    FaultKind kind = FaultKind::status;
    /// Requests whose path starts so; empty for all.
    QString pathPrefix{};
    /// Only requests about this project; empty for all.
    QString projectId{};
    /// How many matching requests are hit before the fault is gone; negative for all.
    int times = -1;
    int status = 500;
    /// Body of a `status` fault; null for the service's own error document.
    QByteArray body{};
    int pauseMs = 0;
    qint64 bytes = 0;
    QString location{};
};

/// The faults in force, the first match wins. Safe to use from any thread.
class Faults final {
public:
    void add(Fault fault);
    void clear();
    [[nodiscard]] QList<Fault> list() const;

    /// The fault that hits this request, if any; counts down `times`.
    [[nodiscard]] std::optional<Fault> take(const QString& path, const QString& projectId);

private:
    mutable std::mutex m_mutex;
    QList<Fault> m_faults;
};

/// The answer as the fault delivers it. Not every fault asks for the true one.
[[nodiscard]] Reply deliver(const Fault& fault, const std::function<Reply()>& trueAnswer);

}  // namespace tidemark::sandbox
