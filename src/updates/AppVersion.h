#pragma once

#include <QList>
#include <QString>
#include <compare>

namespace tidemark {

/// A version as releases are named: numbers apart by dots, then perhaps the mark of a pre-release, as in
/// "1.10", "v2.0.1", "1.0-beta.2", "1.0rc1" or "1.0~rc1". Whatever follows a "+" only names the build.
///
///     rubbish < 1.0-alpha < 1.0-beta.2 < 1.0-beta.10 < 1.0-rc1 < 1.0 == 1.0.0 < 1.0.1 < 1.9 < 1.10
///
/// Marks compare letter by letter, regardless of case, but the numbers in them by their value. A text that
/// does not begin with a number is lower than every version and equal to any other such text, so that it is
/// never an update.
class AppVersion {
public:
    explicit AppVersion(const QString& text);

    [[nodiscard]] bool isValid() const { return !m_numbers.isEmpty(); }
    [[nodiscard]] bool isPreRelease() const { return !m_mark.isEmpty(); }

    [[nodiscard]] std::strong_ordering operator<=>(const AppVersion& other) const;
    [[nodiscard]] bool operator==(const AppVersion& other) const { return std::is_eq(*this <=> other); }

private:
    /// Of any length, in decimal digits without leading zeros; the zeros at the end are left out.
    QList<QString> m_numbers;
    /// The mark of a pre-release in pieces, each of letters or of digits.
    QList<QString> m_mark;
};

}  // namespace tidemark
