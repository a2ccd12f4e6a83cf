#include "presentation/DateFormat.h"

#include <sys/stat.h>
#include <unicode/calendar.h>
#include <unicode/datefmt.h>
#include <unicode/fieldpos.h>
#include <unicode/reldatefmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <array>
#include <clocale>
#include <memory>

namespace tidemark {

namespace {

/// The locale that the user wants dates in (LC_TIME), which may differ from that of the messages.
icu::Locale userLocale() {
    const char* name = std::setlocale(LC_TIME, nullptr);
    const QByteArray locale(name ? name : "C");
    if (locale == "C" || locale == "POSIX" || locale.startsWith("C."))
        return icu::Locale::getUS();
    return icu::Locale::createCanonical(locale.constData());
}

UDate toDate(Clock::TimePoint time) {
    return static_cast<UDate>(time.time_since_epoch().count());
}

/// What says which zone the machine is in.
struct ZoneSource {
    QByteArray variable = qgetenv("TZ");
    /// Of the system's zone file: its place and when it was written.
    std::array<quint64, 4> file{};

    static ZoneSource current() {
        ZoneSource source;
        struct stat info{};
        if (stat("/etc/localtime", &info) == 0)
            source.file = {info.st_dev, info.st_ino, static_cast<quint64>(info.st_mtim.tv_sec),
                           static_cast<quint64>(info.st_mtim.tv_nsec)};
        return source;
    }

    bool operator==(const ZoneSource&) const = default;
};

/// The zone that the machine is in now: people travel. Found anew only when its source has changed, because
/// ICU looks through its whole database where the zone file is a copy and no link.
const icu::TimeZone& hostZone() {
    static ZoneSource source;
    static std::unique_ptr<icu::TimeZone> zone;
    if (const ZoneSource now = ZoneSource::current(); !zone || now != source) {
        source = now;
        zone.reset(icu::TimeZone::detectHostTimeZone());
    }
    return *zone;
}

/// The time in the user's calendar and zone.
std::unique_ptr<icu::Calendar> localCalendar(Clock::TimePoint time) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(hostZone(), userLocale(), status));
    calendar->setTime(toDate(time), status);
    return calendar;
}

QString toQString(const icu::UnicodeString& text) {
    return QString::fromUtf16(text.getBuffer(), text.length());
}

QString format(const icu::DateFormat& formatter, Clock::TimePoint time) {
    icu::UnicodeString text;
    icu::FieldPosition anywhere;
    return toQString(formatter.format(*localCalendar(time), text, anywhere));
}

}  // namespace

QString DateFormat::relative(Clock::TimePoint time, Clock::TimePoint now) {
    static const auto formatter = [] {
        UErrorCode status = U_ZERO_ERROR;
        return std::make_unique<icu::RelativeDateTimeFormatter>(userLocale(), status);
    }();
    struct Unit {
        std::chrono::seconds length;
        URelativeDateTimeUnit unit;
    };
    using namespace std::chrono_literals;
    const auto elapsed = std::chrono::duration_cast<std::chrono::seconds>(now - time);
    Unit chosen{1s, UDAT_REL_UNIT_SECOND};
    for (const Unit unit : {Unit{60s, UDAT_REL_UNIT_MINUTE}, Unit{3600s, UDAT_REL_UNIT_HOUR},
                            Unit{86400s, UDAT_REL_UNIT_DAY}}) {
        if (elapsed >= unit.length)
            chosen = unit;
    }
    icu::UnicodeString text;
    UErrorCode status = U_ZERO_ERROR;
    formatter->formatNumeric(-static_cast<double>(elapsed / chosen.length), chosen.unit, text, status);
    return toQString(text);
}

QString DateFormat::absolute(Clock::TimePoint time) {
    static const std::unique_ptr<icu::DateFormat> formatter(icu::DateFormat::createDateTimeInstance(
        icu::DateFormat::kMediumRelative, icu::DateFormat::kShort, userLocale()));
    return format(*formatter, time);
}

QString DateFormat::exact(Clock::TimePoint time) {
    static const std::unique_ptr<icu::DateFormat> formatter(icu::DateFormat::createDateTimeInstance(
        icu::DateFormat::kMedium, icu::DateFormat::kMedium, userLocale()));
    return format(*formatter, time);
}

bool DateFormat::isSameDay(Clock::TimePoint first, Clock::TimePoint second) {
    const auto day = [](Clock::TimePoint time) {
        UErrorCode status = U_ZERO_ERROR;
        return localCalendar(time)->get(UCAL_JULIAN_DAY, status);
    };
    return day(first) == day(second);
}

}  // namespace tidemark
