#pragma once

#include <QString>
#include <QUrl>
#include <optional>

namespace tidemark {

/// The address, if the text is an absolute http or https one. No others are ever opened.
[[nodiscard]] std::optional<QUrl> webAddress(const QString& text);

/// Opens pages and files with the desktop's programs.
class Workspace {
public:
    Workspace() = default;
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;
    virtual ~Workspace() = default;

    /// Opens a web page in the default browser. Anything but http and https is ignored.
    virtual void openURL(const QUrl& url) = 0;
    /// Opens a local file with the application that is set for its type.
    virtual void openFile(const QString& path) = 0;
};

}  // namespace tidemark
