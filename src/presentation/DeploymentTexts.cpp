#include "presentation/DeploymentTexts.h"

#include <QTextBoundaryFinder>
#include <algorithm>
#include <cmath>

#include "platform/base/Characters.h"
#include "presentation/DateFormat.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

double secondsSince(qint64 created, Clock::TimePoint now) {
    return static_cast<double>(now.time_since_epoch().count()) / 1000.0 -
           static_cast<double>(created) / 1000.0;
}

/// Below a day in the largest whole unit.
QString ago(qint64 seconds) {
    if (seconds < 60)
        return u"%1s ago"_s.arg(seconds);
    if (seconds < 3600)
        return u"%1m ago"_s.arg(seconds / 60);
    return u"%1h ago"_s.arg(seconds / 3600);
}

QString withLowerCaseInitial(const QString& text) {
    const QString initial = firstCharacters(text, 1);
    return initial.toLower() + text.sliced(initial.size());
}

}  // namespace

QString relativeAge(const Deployment& deployment, Clock::TimePoint now) {
    const auto elapsed = static_cast<qint64>(std::trunc(secondsSince(deployment.created, now)));
    return elapsed < 86400 ? ago(elapsed) : u"%1d ago"_s.arg(elapsed / 86400);
}

QString pushedAtDescription(const Deployment& deployment, Clock::TimePoint now) {
    if (secondsSince(deployment.created, now) < 60)
        return u"just now"_s;
    const Clock::TimePoint pushedAt{std::chrono::milliseconds(deployment.created)};
    if (DateFormat::isSameDay(pushedAt, now))
        return DateFormat::relative(pushedAt, now);
    return withLowerCaseInitial(DateFormat::absolute(pushedAt));
}

std::optional<QString> buildDuration(const Deployment& deployment) {
    if (deployment.deploymentState() != DeploymentState::ready || !deployment.ready ||
        deployment.created >= *deployment.ready)
        return std::nullopt;
    // Unsigned, for the distance between two hostile times needs all 64 bits.
    const quint64 duration =
        static_cast<quint64>(*deployment.ready) - static_cast<quint64>(deployment.created);
    const quint64 seconds = duration / 1000;
    if (duration < 60000)
        return u"Built in %1s"_s.arg(seconds);
    const quint64 rest = seconds % 60;
    if (rest == 0)
        return u"Built in %1m"_s.arg(seconds / 60);
    return u"Built in %1m %2s"_s.arg(seconds / 60).arg(rest);
}

QString stalenessDescription(const AppState& state, const QString& projectId, Clock::TimePoint now) {
    const auto checkedAt = state.lastCheckedAt().constFind(projectId);
    if (checkedAt == state.lastCheckedAt().cend())
        return u"Not successfully checked since Tidemark started."_s;
    const auto age = std::chrono::duration_cast<std::chrono::seconds>(now - *checkedAt);
    return u"Showing the status from the last successful check, %1."_s.arg(ago(age.count()));
}

}  // namespace tidemark
