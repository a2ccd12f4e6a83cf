#include "sandbox/http/Faults.h"

#include <QJsonObject>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace tidemark::sandbox {

namespace {

Reply statusReply(const Fault& fault) {
    const QJsonObject error{{u"code"_s, u"sandbox_fault"_s},
                            {u"message"_s, u"The sandbox was asked to fail."_s}};
    Reply reply = Reply::json({{u"error"_s, error}}, fault.status);
    if (!fault.body.isNull())
        reply.body = fault.body;
    if (fault.status == 429)
        reply.headers = {{"Retry-After", "60"}};
    return reply;
}

Reply bombReply(const Fault& fault) {
    constexpr qint64 enough = 64'000'000;
    const QByteArray content(fault.bytes > 0 ? fault.bytes : enough, ' ');
    // qCompress puts its own four bytes before the zlib stream that "deflate" means.
    return {.body = qCompress(content).mid(4), .headers = {{"Content-Encoding", "deflate"}}};
}

}  // namespace

void Faults::add(Fault fault) {
    const std::scoped_lock lock(m_mutex);
    m_faults.append(std::move(fault));
}

void Faults::clear() {
    const std::scoped_lock lock(m_mutex);
    m_faults.clear();
}

QList<Fault> Faults::list() const {
    const std::scoped_lock lock(m_mutex);
    return m_faults;
}

std::optional<Fault> Faults::take(const QString& path, const QString& projectId) {
    const std::scoped_lock lock(m_mutex);
    const auto hit = std::find_if(m_faults.begin(), m_faults.end(), [&](const Fault& fault) {
        return fault.times != 0 && path.startsWith(fault.pathPrefix) &&
               (fault.projectId.isEmpty() || fault.projectId == projectId);
    });
    if (hit == m_faults.end())
        return std::nullopt;
    Fault fault = *hit;
    if (hit->times > 0)
        --hit->times;
    if (hit->times == 0)
        m_faults.erase(hit);
    return fault;
}

Reply deliver(const Fault& fault, const std::function<Reply()>& trueAnswer) {
    Reply answer;
    switch (fault.kind) {
        case FaultKind::status:
            return statusReply(fault);
        case FaultKind::stall:
            return {.status = 0, .delivery = Delivery::never};
        case FaultKind::reset:
            return {.status = 0, .delivery = Delivery::reset};
        case FaultKind::garbage:
            return {.contentType = "text/html; charset=utf-8",
                    .body = "<!doctype html><title>Be right back</title><h1>Be right back</h1>"};
        case FaultKind::bomb:
            return bombReply(fault);
        case FaultKind::redirect:
            return {.status = fault.status / 100 == 3 ? fault.status : 302,
                    .headers = {{"Location", fault.location.toUtf8()}}};
        case FaultKind::delay:
            answer = trueAnswer();
            answer.pauseMs = fault.pauseMs;
            return answer;
        case FaultKind::drip:
            answer = trueAnswer();
            answer.delivery = Delivery::drip;
            answer.pauseMs = fault.pauseMs > 0 ? fault.pauseMs : 1000;
            return answer;
        case FaultKind::cut:
            answer = trueAnswer();
            answer.delivery = Delivery::cut;
            return answer;
        case FaultKind::huge:
            answer = trueAnswer();
            if (fault.bytes == 0)
                answer.delivery = Delivery::endless;
            else
                answer.body = answer.body.leftJustified(fault.bytes, ' ');
            return answer;
    }
    Q_UNREACHABLE();
}

}  // namespace tidemark::sandbox
