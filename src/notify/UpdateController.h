#pragma once

#include <QString>
#include <functional>
#include <memory>

#include "platform/base/Bundle.h"
#include "updates/Updater.h"

namespace tidemark {

/// Whether this build updates itself, and the updater if it does. One instance for the process, made at the
/// very start. UI thread only.
class UpdateController {
public:
    /// Makes the updater with `makeUpdater`, and starts it, only where the bundle is configured.
    UpdateController(Bundle bundle, const std::function<std::unique_ptr<Updater>()>& makeUpdater);

    /// Whether the bundle names a feed and a key, neither of them still the placeholder of the build.
    [[nodiscard]] bool isConfigured() const;
    /// Null in a build that is not configured.
    [[nodiscard]] Updater* controller() const { return m_controller.get(); }
    /// When the last check was, in the user's locale, or why there was none.
    [[nodiscard]] QString statusDescription() const;
    /// The user's own check; nothing without an updater.
    void checkForUpdates();

private:
    Bundle m_bundle;
    std::unique_ptr<Updater> m_controller;
};

}  // namespace tidemark
