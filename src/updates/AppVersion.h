#pragma once

#include <QList>
#include <QString>
#include <compare>

namespace tidemark {

/// The version of a release: numbers separated by dots, followed by the mark of a pre-release if it is one,
/// as in "1.10", "v2.0.1", "1.0-beta.2", "1.0rc1" or "1.0~rc1". Everything after a "+" names the build and is
/// ignored.
///
///     rubbish < 1.0-alpha < 1.0-beta.2 < 1.0-beta.10 < 1.0-rc1 < 1.0 == 1.0.0 < 1.0.1 < 1.9 < 1.10
///
/// Marks compare letter by letter, ignoring case, but numbers in them by their value. A text that does not
/// begin with a number is lower than every version and equal to any other such text, so it is never an
/// update.
///
/// QVersionNumber is not used, because its numbers end at 2^31: it would cut off a date such as 202311232359.
class AppVersion {
public:
    explicit AppVersion(const QString& text);

    [[nodiscard]] bool isValid() const { return !m_numbers.isEmpty(); }
    [[nodiscard]] bool isPreRelease() const { return !m_mark.isEmpty(); }

    [[nodiscard]] std::strong_ordering operator<=>(const AppVersion& other) const;
    [[nodiscard]] bool operator==(const AppVersion& other) const { return std::is_eq(*this <=> other); }

private:
    /// Numbers of any length, in decimal digits without leading zeros. Trailing numbers that are 0 are
    /// omitted.
    QList<QString> m_numbers;
    /// The mark of a pre-release, split into runs of letters and runs of digits.
    QList<QString> m_mark;
};

}  // namespace tidemark
