#include "sandbox/Random.h"

#include <cmath>

namespace tidemark::sandbox {

namespace {

/// SplitMix64's output function.
quint64 mix(quint64 value) {
    value = (value ^ (value >> 30U)) * 0xBF58476D1CE4E5B9ULL;
    value = (value ^ (value >> 27U)) * 0x94D049BB133111EBULL;
    return value ^ (value >> 31U);
}

constexpr quint64 goldenStep = 0x9E3779B97F4A7C15ULL;

}  // namespace

quint64 seedOf(const QString& text) {
    quint64 hash = 0xCBF29CE484222325ULL;
    for (const QChar letter : text)
        hash = (hash ^ letter.unicode()) * 0x100000001B3ULL;
    return hash;
}

Random Random::stream(quint64 seed, quint64 purpose, quint64 index) {
    return Random(mix(mix(seed + goldenStep) + mix(purpose + 1) * goldenStep + index));
}

quint64 Random::next() {
    m_state += goldenStep;
    return mix(m_state);
}

int Random::below(int bound) {
    return bound <= 1 ? 0 : static_cast<int>(next() % static_cast<quint64>(bound));
}

int Random::between(int low, int high) {
    return low + below(high - low + 1);
}

double Random::real() {
    return static_cast<double>(next() >> 11U) * 0x1p-53;
}

double Random::exponential(double mean) {
    return -mean * std::log(1.0 - real());
}

QString Random::letters(int length) {
    return draw(length, QLatin1StringView("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"));
}

QString Random::lowerLetters(int length) {
    return draw(length, QLatin1StringView("0123456789abcdefghijklmnopqrstuvwxyz"));
}

QString Random::hex(int length) {
    return draw(length, QLatin1StringView("0123456789abcdef"));
}

QString Random::draw(int length, QLatin1StringView alphabet) {
    QString text(length, Qt::Uninitialized);
    for (QChar& letter : text)
        letter = alphabet.at(below(static_cast<int>(alphabet.size())));
    return text;
}

}  // namespace tidemark::sandbox
