#pragma once

#include <QList>
#include <QStringList>

#include "platform/session/Workspace.h"

namespace tidemark {

/// A desktop that only remembers what it was to open.
class FakeWorkspace final : public Workspace {
public:
    QList<QUrl> urls;
    QStringList files;

    void openURL(const QUrl& url) override { urls.append(url); }
    void openFile(const QString& path) override { files.append(path); }
};

}  // namespace tidemark
