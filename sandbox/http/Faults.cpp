#include "sandbox/http/Faults.h"

#include <QJsonObject>
#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace tidemark::sandbox {

namespace {

constexpr std::array<std::pair<FaultKind, QLatin1StringView>, 10> kindNames = {{
    {FaultKind::status, "status"_L1},
    {FaultKind::stall, "stall"_L1},
    {FaultKind::delay, "delay"_L1},
    {FaultKind::drip, "drip"_L1},
    {FaultKind::cut, "cut"_L1},
    {FaultKind::reset, "reset"_L1},
    {FaultKind::garbage, "garbage"_L1},
    {FaultKind::huge, "huge"_L1},
    {FaultKind::bomb, "bomb"_L1},
    {FaultKind::redirect, "redirect"_L1},
}};

QByteArray errorDocument(int status) {
    const QJsonObject error{{u"code"_s, u"sandbox_fault"_s},
                            {u"message"_s, u"The sandbox was asked to fail."_s}};
    return Reply::json({{u"error"_s, error}}, status).body;
}

Reply statusReply(const Fault& fault) {
    Reply reply{.status = fault.status,
                .body = fault.body.isNull() ? errorDocument(fault.status) : fault.body};
    if (fault.status == 429)
        reply.headers = {{"Retry-After", "60"}};
    return reply;
}

Reply redirectReply(const Fault& fault) {
    const bool named = fault.status >= 300 && fault.status < 400;
    return {.status = named ? fault.status : 302, .headers = {{"Location", fault.location.toUtf8()}}};
}

Reply bombReply(const Fault& fault) {
    constexpr qint64 enough = 64'000'000;
    const QByteArray content(fault.bytes > 0 ? fault.bytes : enough, ' ');
    // qCompress puts its own four bytes before the zlib stream that "deflate" means.
    return {.body = qCompress(content).mid(4), .headers = {{"Content-Encoding", "deflate"}}};
}

}  // namespace

QString toString(FaultKind kind) {
    const auto entry = std::find_if(kindNames.begin(), kindNames.end(),
                                    [kind](const auto& each) { return each.first == kind; });
    return entry == kindNames.end() ? QString() : QString(entry->second);
}

std::optional<FaultKind> faultKindFromString(const QString& name) {
    const auto entry = std::find_if(kindNames.begin(), kindNames.end(),
                                    [&](const auto& each) { return each.second == name; });
    return entry == kindNames.end() ? std::nullopt : std::optional(entry->first);
}

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

std::optional<Reply> substituteFor(const Fault& fault) {
    switch (fault.kind) {
        case FaultKind::status:
            return statusReply(fault);
        case FaultKind::stall:
            return Reply{.status = 0, .delivery = Delivery::never};
        case FaultKind::reset:
            return Reply{.status = 0, .delivery = Delivery::reset};
        case FaultKind::garbage:
            return Reply{.contentType = "text/html; charset=utf-8",
                         .body = "<!doctype html><title>Be right back</title><h1>Be right back</h1>"};
        case FaultKind::bomb:
            return bombReply(fault);
        case FaultKind::redirect:
            return redirectReply(fault);
        case FaultKind::delay:
        case FaultKind::drip:
        case FaultKind::cut:
        case FaultKind::huge:
            break;
    }
    return std::nullopt;
}

Reply spoil(Reply answer, const Fault& fault) {
    switch (fault.kind) {
        case FaultKind::delay:
            answer.pauseMs = fault.pauseMs;
            break;
        case FaultKind::drip:
            answer.delivery = Delivery::drip;
            answer.pauseMs = fault.pauseMs > 0 ? fault.pauseMs : 1000;
            break;
        case FaultKind::cut:
            answer.delivery = Delivery::cut;
            break;
        case FaultKind::huge:
            if (fault.bytes == 0)
                answer.delivery = Delivery::endless;
            else
                answer.body = answer.body.leftJustified(fault.bytes, ' ');
            break;
        case FaultKind::status:
        case FaultKind::stall:
        case FaultKind::reset:
        case FaultKind::garbage:
        case FaultKind::bomb:
        case FaultKind::redirect:
            break;
    }
    return answer;
}

}  // namespace tidemark::sandbox
