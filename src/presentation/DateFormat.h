#pragma once

#include <QString>

#include "platform/base/Clock.h"

namespace tidemark {

/// Date phrases in the user's locale, calendar and time zone. The formatters are made on first use and kept;
/// UI thread only.
class DateFormat {
public:
    DateFormat() = delete;

    /// How long ago, in whole words: "5 minutes ago", "3 hours ago".
    [[nodiscard]] static QString relative(Clock::TimePoint time, Clock::TimePoint now);

    /// A medium date, or a word such as "Yesterday", and a short time: "Yesterday, 7:25 PM", "Nov 20, 2026,
    /// 7:25 PM".
    [[nodiscard]] static QString absolute(Clock::TimePoint time);

    /// A medium date and a time with seconds: "Nov 20, 2026, 7:25:13 PM".
    [[nodiscard]] static QString exact(Clock::TimePoint time);

    [[nodiscard]] static bool isSameDay(Clock::TimePoint first, Clock::TimePoint second);
};

}  // namespace tidemark
