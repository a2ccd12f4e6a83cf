#pragma once

#include "platform/session/Workspace.h"

namespace tidemark {

/// Opens with what the user has set as default, through xdg-open where it exists. Returns as soon as the
/// opener is started; UI thread only.
class DesktopWorkspace final : public Workspace {
public:
    void openURL(const QUrl& url) override;
    void openFile(const QString& path) override;
};

}  // namespace tidemark
