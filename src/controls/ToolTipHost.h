#pragma once

#include "platform/windows/ToolTipWindow.h"

namespace tidemark {

/// A window whose items show hover texts.
class ToolTipHost {
public:
    ToolTipHost() = default;
    ToolTipHost(const ToolTipHost&) = delete;
    ToolTipHost& operator=(const ToolTipHost&) = delete;
    virtual ~ToolTipHost() = default;

    /// Gone with the window.
    [[nodiscard]] ToolTipWindow& toolTip() { return m_toolTip; }
    [[nodiscard]] const ToolTipWindow& toolTip() const { return m_toolTip; }

private:
    ToolTipWindow m_toolTip;
};

}  // namespace tidemark
