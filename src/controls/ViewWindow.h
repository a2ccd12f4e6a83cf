#pragma once

#include <qqmlintegration.h>

#include <QPointer>
#include <QQuickView>
#include <QString>

#include "controls/Navigation.h"
#include "platform/windows/ToolTipWindow.h"

namespace tidemark {

/// A window with a view of ours. It owns the tool tip of the view's items, and hides it at each click, key
/// and turn of the wheel, and when the window goes. It tells `Navigation` whether the user moves about with
/// the keyboard.
class ViewWindow : public QQuickView {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Windows are made in C++")
    /// Whether Alt is held, so that the letters that go with it are underlined.
    Q_PROPERTY(bool isAltHeld READ isAltHeld NOTIFY altHeldChanged FINAL)

public:
    /// The engine outlives the window.
    explicit ViewWindow(QQmlEngine& engine);

    [[nodiscard]] ToolTipWindow& toolTip() { return m_toolTip; }
    [[nodiscard]] const ToolTipWindow& toolTip() const { return m_toolTip; }

    [[nodiscard]] bool isAltHeld() const { return m_isAltHeld; }
    /// A label with its first such letter underlined, as styled text.
    Q_INVOKABLE [[nodiscard]] static QString withMnemonic(const QString& label, const QString& letter);

Q_SIGNALS:
    void altHeldChanged();

protected:
    bool event(QEvent* event) override;

private:
    void setAltHeld(bool isHeld);
    void watchNavigation(const QEvent& event);
    void setByKeyboard(bool byKeyboard);

    QPointer<Navigation> m_navigation;
    ToolTipWindow m_toolTip;
    bool m_isAltHeld = false;
};

}  // namespace tidemark
