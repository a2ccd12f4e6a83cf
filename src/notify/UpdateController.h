#pragma once

#include <QString>
#include <functional>
#include <memory>

#include "platform/base/Bundle.h"
#include "updates/Updater.h"

namespace tidemark {

/// Owns the updater of a build that updates itself. One instance per process, created at the start. UI thread
/// only.
class UpdateController {
public:
    /// Creates the updater with `makeUpdater` and starts it, if the bundle is configured.
    UpdateController(Bundle bundle, const std::function<std::unique_ptr<Updater>()>& makeUpdater);

    /// Whether the bundle has a feed and a key that are not placeholders of the build.
    [[nodiscard]] bool isConfigured() const;
    /// Null in a build that is not configured.
    [[nodiscard]] Updater* controller() const { return m_controller.get(); }
    /// The date of the last check in the user's locale, or why there was none.
    [[nodiscard]] QString statusDescription() const;
    /// Checks for the user; does nothing without an updater.
    void checkForUpdates();

private:
    Bundle m_bundle;
    std::unique_ptr<Updater> m_controller;
};

}  // namespace tidemark
