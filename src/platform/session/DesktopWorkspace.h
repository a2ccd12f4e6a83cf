#pragma once

#include "platform/session/Workspace.h"

namespace tidemark {

/// Opens with the user's default programs, through xdg-open where it exists. Does not wait for the program to
/// open. UI thread only.
class DesktopWorkspace final : public Workspace {
public:
    void openURL(const QUrl& url) override;
    void openFile(const QString& path) override;
};

}  // namespace tidemark
