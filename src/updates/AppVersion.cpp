#include "updates/AppVersion.h"

#include <algorithm>

namespace tidemark {

namespace {

bool isDigit(QChar c) {
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

/// The digits without leading zeros. Numbers in this form compare by their length first.
QString withoutZeros(QStringView digits) {
    while (digits.size() > 1 && digits.front() == QLatin1Char('0'))
        digits = digits.sliced(1);
    return digits.toString();
}

/// Removes the leading digits, or the leading letters, from `text` and returns them.
QStringView takeRun(QStringView& text, bool digits) {
    qsizetype size = 0;
    while (size < text.size() && text.at(size).isLetterOrNumber() && isDigit(text.at(size)) == digits)
        ++size;
    const QStringView run = text.first(size);
    text = text.sliced(size);
    return run;
}

std::strong_ordering compareNumbers(const QString& left, const QString& right) {
    if (left.size() != right.size())
        return left.size() <=> right.size();
    return left.compare(right) <=> 0;
}

/// Numbers precede words, as in semantic versioning.
std::strong_ordering comparePieces(const QString& left, const QString& right) {
    const bool isNumber = isDigit(left.front());
    if (isNumber != isDigit(right.front()))
        return isNumber ? std::strong_ordering::less : std::strong_ordering::greater;
    return isNumber ? compareNumbers(left, right) : left.compare(right) <=> 0;
}

template <typename Compare>
std::strong_ordering compareLists(const QList<QString>& left, const QList<QString>& right, Compare compare) {
    return std::lexicographical_compare_three_way(left.begin(), left.end(), right.begin(), right.end(),
                                                  compare);
}

}  // namespace

AppVersion::AppVersion(const QString& text) {
    const QString trimmed = text.trimmed().toLower();
    QStringView rest = trimmed;
    if (rest.size() > 1 && rest.front() == QLatin1Char('v') && isDigit(rest.at(1)))
        rest = rest.sliced(1);
    while (!rest.isEmpty() && isDigit(rest.front())) {
        m_numbers.append(withoutZeros(takeRun(rest, true)));
        if (rest.size() < 2 || rest.front() != QLatin1Char('.') || !isDigit(rest.at(1)))
            break;
        rest = rest.sliced(1);
    }
    if (m_numbers.isEmpty())
        return;
    while (m_numbers.size() > 1 && m_numbers.constLast() == QLatin1String("0"))
        m_numbers.removeLast();

    if (const qsizetype build = rest.indexOf(QLatin1Char('+')); build >= 0)
        rest.truncate(build);
    while (!rest.isEmpty()) {
        if (!rest.front().isLetterOrNumber()) {
            rest = rest.sliced(1);
            continue;
        }
        const bool digits = isDigit(rest.front());
        const QStringView run = takeRun(rest, digits);
        m_mark.append(digits ? withoutZeros(run) : run.toString());
    }
}

std::strong_ordering AppVersion::operator<=>(const AppVersion& other) const {
    if (const auto order = compareLists(m_numbers, other.m_numbers, compareNumbers); std::is_neq(order))
        return order;
    // A pre-release precedes its release.
    if (isPreRelease() != other.isPreRelease())
        return isPreRelease() ? std::strong_ordering::less : std::strong_ordering::greater;
    return compareLists(m_mark, other.m_mark, comparePieces);
}

}  // namespace tidemark
