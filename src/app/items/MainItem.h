#pragma once

#include <QObject>
#include <memory>

#include "platform/base/Clock.h"
#include "platform/base/DeferredCall.h"
#include "platform/tray/StatusItem.h"
#include "state/AppState.h"

namespace tidemark {

/// The program's own item in the panel: the logo, a dot in the colour of the overall state, and a summary; a
/// tool tip when the state is not current. It follows the state: any number of changes in one turn of the
/// event loop make one update. UI thread only.
class MainItem final : public QObject {
    Q_OBJECT

public:
    /// All of them outlive the item. Without a panel to ask there is no item, and nothing happens.
    MainItem(const AppState& state, const Clock& clock, StatusBar& statusBar);

    /// The action of a click.
    void setAction(StatusItem::Action action);

    /// Shows the current state at once.
    void updateMainButton();

private:
    const AppState& m_state;
    const Clock& m_clock;
    std::unique_ptr<StatusItem> m_item;
    DeferredCall m_update{[this] { updateMainButton(); }};
};

}  // namespace tidemark
