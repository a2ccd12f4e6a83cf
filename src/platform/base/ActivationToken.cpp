#include "platform/base/ActivationToken.h"

namespace tidemark {
namespace {

constexpr const char* variable = "XDG_ACTIVATION_TOKEN";
constexpr qsizetype longestToken = 4096;

}  // namespace

void offerActivationToken(const QString& token) {
    if (token.size() <= longestToken)
        qputenv(variable, token.toUtf8());
}

void withdrawActivationToken() {
    qunsetenv(variable);
}

}  // namespace tidemark
