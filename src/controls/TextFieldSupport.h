#pragma once

#include <qqmlintegration.h>

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QString>
#include <memory>

#include "platform/windows/Menu.h"
#include "platform/windows/MenuWindow.h"

namespace tidemark {

/// What Qt's text field lacks: the usual menu, and a masked text that assistive tools cannot read. Of a
/// masked field they learn its name, its place, its length and whether it has the focus; Qt itself would give
/// them the whole text and withhold the name.
class TextFieldSupport : public QObject {
    Q_OBJECT
    QML_ELEMENT
    /// A Qt Quick Templates text field. The support is among its children, and `field` is set once.
    Q_PROPERTY(QQuickItem* field READ field WRITE setField NOTIFY fieldChanged FINAL REQUIRED)
    /// The name that assistive tools give to the field.
    Q_PROPERTY(QString label MEMBER m_label NOTIFY labelChanged FINAL REQUIRED)
    Q_PROPERTY(bool isMasked READ isMasked WRITE setMasked NOTIFY maskedChanged FINAL REQUIRED)

public:
    explicit TextFieldSupport(QObject* parent = nullptr);
    ~TextFieldSupport() override;

    /// The support of a field; null where there is none.
    [[nodiscard]] static TextFieldSupport* of(const QObject* field);

    [[nodiscard]] QQuickItem* field() const { return m_field; }
    void setField(QQuickItem* field);
    [[nodiscard]] QString label() const { return m_label; }
    [[nodiscard]] bool isMasked() const { return m_isMasked; }
    void setMasked(bool isMasked);

    /// What can be done with the text at the moment. Of a masked one nothing can be copied. The entries do
    /// nothing once the field is gone.
    [[nodiscard]] Menu menu() const;

    /// For a token or an id input methods learn, complete and correct nothing.
    Q_INVOKABLE [[nodiscard]] static Qt::InputMethodHints inputMethodHints(bool isCode);

Q_SIGNALS:
    void fieldChanged();
    void labelChanged();
    void maskedChanged();

protected:
    /// Opens the menu at a click with the right button and at the keys that ask for it.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void openMenu(QPointF place);

    QPointer<QQuickItem> m_field;
    QString m_label;
    bool m_isMasked = false;
    std::unique_ptr<MenuWindow> m_menu;
};

}  // namespace tidemark
