#pragma once

#include <QString>
#include <span>

namespace tidemark::sandbox {

/// A seed out of a text; unlike Qt's hash the same on every processor.
[[nodiscard]] quint64 seedOf(const QString& text);

/// Random numbers that are the same on every platform and library: equal seeds give equal worlds.
class Random final {
public:
    explicit Random(quint64 seed) : m_state(seed) {}

    /// An independent sequence for each pair of numbers, so that drawing more from one disturbs no other.
    [[nodiscard]] static Random stream(quint64 seed, quint64 purpose, quint64 index);

    quint64 next();

    /// 0 … `bound` - 1.
    int below(int bound);

    /// `low` … `high`.
    int between(int low, int high);

    /// 0 up to, but not, 1.
    double real();

    bool chance(double probability) { return real() < probability; }

    /// The gap to the next event of a steady random flow.
    double exponential(double mean);

    template <class T>
    const T& pick(std::span<const T> choices) {
        return choices[static_cast<std::size_t>(below(static_cast<int>(choices.size())))];
    }

    /// `length` letters and digits, or hexadecimal digits.
    QString letters(int length);
    QString lowerLetters(int length);
    QString hex(int length);

private:
    QString draw(int length, QLatin1StringView alphabet);

    quint64 m_state;
};

}  // namespace tidemark::sandbox
