#pragma once

#include <QString>

namespace tidemark {

/// Puts the token of a click (xdg-activation protocol) into the environment, where our next window or the
/// next program that we start finds it. A token of more than 4,096 characters is ignored: the environment of
/// a new process has limits.
void offerActivationToken(const QString& token);
/// Removes the token again, because it is good for one activation.
void withdrawActivationToken();

}  // namespace tidemark
