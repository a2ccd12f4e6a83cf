#pragma once

#include <QHash>
#include <QRandomGenerator>
#include <QString>
#include <array>
#include <cmath>

namespace tidemark::sandbox {

/// A seed made of a text.
[[nodiscard]] inline quint64 seedOf(const QString& text) {
    return qHash(text, 1);
}

/// Random numbers. Equal seeds give equal worlds on one machine.
class Random final {
public:
    explicit Random(quint64 seed) : Random(stream(seed, 0, 0)) {}

    /// An independent sequence for each pair of numbers, so that drawing more from one disturbs no other.
    [[nodiscard]] static Random stream(quint64 seed, quint64 purpose, quint64 index) {
        return Random(std::array{seed, purpose, index});
    }

    /// 0 … `bound` - 1.
    int below(int bound) { return bound <= 1 ? 0 : m_generator.bounded(bound); }
    /// `low` … `high`.
    int between(int low, int high) { return low + below(high - low + 1); }
    /// 0 up to, but not, 1.
    double real() { return m_generator.generateDouble(); }
    bool chance(double probability) { return real() < probability; }
    /// The gap to the next event of a steady random flow.
    double exponential(double mean) { return -mean * std::log(1.0 - real()); }

    /// `length` characters out of an alphabet, which is that of the service's ids unless given.
    QString letters(int length, QLatin1StringView alphabet = QLatin1StringView(
                                    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz")) {
        QString text(length, Qt::Uninitialized);
        for (QChar& letter : text)
            letter = alphabet.at(below(static_cast<int>(alphabet.size())));
        return text;
    }

private:
    explicit Random(const std::array<quint64, 3>& seeds)
        : m_generator(reinterpret_cast<const quint32*>(seeds.data()),
                      static_cast<qsizetype>(2 * seeds.size())) {}

    QRandomGenerator m_generator;
};

}  // namespace tidemark::sandbox
