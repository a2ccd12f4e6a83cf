#pragma once

#include <QString>

namespace tidemark {

/// Puts the token that came with a click, after the xdg-activation protocol, where the next window of ours or
/// the next program that we start finds it. One that is too long to be true is ignored: no program could be
/// started with it.
void offerActivationToken(const QString& token);
/// A token is good for one activation.
void withdrawActivationToken();

}  // namespace tidemark
