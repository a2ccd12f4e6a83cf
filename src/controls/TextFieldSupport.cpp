#include "controls/TextFieldSupport.h"

#include <QAccessible>
#include <QAccessibleObject>
#include <QKeyEvent>
#include <QMetaObject>
#include <QMouseEvent>
#include <QQuickWindow>
#include <algorithm>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

/// An entry that calls a method of the field; disabled unless `isEnabled`.
MenuItem fieldEntry(QQuickItem* field, const QString& title, const char* method, bool isEnabled) {
    MenuItem item{.identifier = title, .title = title};
    if (isEnabled)
        item.action = [field = QPointer(field), method] {
            if (field)
                QMetaObject::invokeMethod(field, method);
        };
    return item;
}

bool asksForMenu(const QKeyEvent& press) {
    return press.key() == Qt::Key_Menu ||
           (press.key() == Qt::Key_F10 && press.modifiers() == Qt::ShiftModifier);
}

class MaskedField final : public QAccessibleObject, public QAccessibleTextInterface {
public:
    explicit MaskedField(QQuickItem* item) : QAccessibleObject(item) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::TextInterface ? static_cast<QAccessibleTextInterface*>(this) : nullptr;
    }

    [[nodiscard]] QAccessibleInterface* parent() const override {
        for (QQuickItem* item = field()->parentItem(); item; item = item->parentItem())
            if (QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(item))
                return interface;
        return QAccessible::queryAccessibleInterface(window());
    }
    [[nodiscard]] QAccessibleInterface* child(int /*index*/) const override { return nullptr; }
    [[nodiscard]] int childCount() const override { return 0; }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* /*child*/) const override { return -1; }
    [[nodiscard]] QWindow* window() const override { return field()->window(); }
    [[nodiscard]] QAccessible::Role role() const override { return QAccessible::EditableText; }

    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state;
        state.editable = true;
        state.passwordEdit = true;
        state.focusable = true;
        state.focused = field()->hasActiveFocus();
        state.disabled = !field()->isEnabled();
        state.invisible = !field()->isVisible();
        return state;
    }

    [[nodiscard]] QRect rect() const override {
        const QRectF inWindow = field()->mapRectToScene(QRectF(0, 0, field()->width(), field()->height()));
        return window() ? inWindow.toRect().translated(window()->mapToGlobal(QPoint())) : QRect();
    }

    [[nodiscard]] QString text(QAccessible::Text kind) const override {
        const TextFieldSupport* support = TextFieldSupport::of(field());
        return support && kind == QAccessible::Name ? support->label() : QString();
    }

    // As many bullets as there are characters, and the place among them.

    [[nodiscard]] int characterCount() const override { return number("length"); }
    [[nodiscard]] QString text(int start, int end) const override {
        const int last = std::clamp(end < 0 ? characterCount() : end, 0, characterCount());
        return QString().fill(QChar(0x2022), std::max(0, last - std::max(0, start)));
    }
    [[nodiscard]] int cursorPosition() const override { return number("cursorPosition"); }
    void setCursorPosition(int position) override { field()->setProperty("cursorPosition", position); }
    [[nodiscard]] int selectionCount() const override {
        return number("selectionStart") < number("selectionEnd") ? 1 : 0;
    }
    void selection(int /*index*/, int* start, int* end) const override {
        *start = number("selectionStart");
        *end = number("selectionEnd");
    }
    void addSelection(int /*start*/, int /*end*/) override {}
    void removeSelection(int /*index*/) override {}
    void setSelection(int /*index*/, int /*start*/, int /*end*/) override {}
    [[nodiscard]] QRect characterRect(int /*offset*/) const override { return rect(); }
    [[nodiscard]] int offsetAtPoint(const QPoint& /*place*/) const override { return -1; }
    void scrollToSubstring(int /*start*/, int /*end*/) override {}
    [[nodiscard]] QString attributes(int /*offset*/, int* start, int* end) const override {
        *start = 0;
        *end = characterCount();
        return {};
    }

private:
    [[nodiscard]] int number(const char* property) const { return field()->property(property).toInt(); }
    [[nodiscard]] QQuickItem* field() const { return static_cast<QQuickItem*>(object()); }
};

QAccessibleInterface* makeMaskedField(const QString& className, QObject* object) {
    const TextFieldSupport* support =
        className == "QQuickTextField"_L1 ? TextFieldSupport::of(object) : nullptr;
    return support && support->isMasked() ? new MaskedField(support->field()) : nullptr;
}

}  // namespace

TextFieldSupport::TextFieldSupport(QObject* parent) : QObject(parent) {
    // Once, however often it is asked for.
    QAccessible::installFactory(&makeMaskedField);
}

TextFieldSupport::~TextFieldSupport() = default;

TextFieldSupport* TextFieldSupport::of(const QObject* field) {
    return field->findChild<TextFieldSupport*>(QString(), Qt::FindDirectChildrenOnly);
}

void TextFieldSupport::setField(QQuickItem* field) {
    if (field == m_field)
        return;
    m_field = field;
    setParent(field);
    field->installEventFilter(this);
    Q_EMIT fieldChanged();
}

void TextFieldSupport::setMasked(bool isMasked) {
    if (isMasked == m_isMasked)
        return;
    m_isMasked = isMasked;
    // The next tool that asks gets an interface of the other kind.
    if (QAccessibleInterface* interface = m_field ? QAccessible::queryAccessibleInterface(m_field) : nullptr)
        QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(interface));
    Q_EMIT maskedChanged();
}

Menu TextFieldSupport::menu() const {
    const bool canCopy = !m_isMasked && !m_field->property("selectedText").toString().isEmpty();
    const bool hasText = m_field->property("length").toInt() > 0;
    return {fieldEntry(m_field, u"Cut"_s, "cut", canCopy), fieldEntry(m_field, u"Copy"_s, "copy", canCopy),
            fieldEntry(m_field, u"Paste"_s, "paste", m_field->property("canPaste").toBool()),
            MenuItem{.identifier = u"separator"_s, .isSeparator = true},
            fieldEntry(m_field, u"Select All"_s, "selectAll", hasText)};
}

Qt::InputMethodHints TextFieldSupport::inputMethodHints(bool isCode) {
    return isCode ? Qt::ImhSensitiveData | Qt::ImhNoPredictiveText | Qt::ImhNoAutoUppercase
                  : Qt::InputMethodHints(Qt::ImhNone);
}

bool TextFieldSupport::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseButtonPress) {
        const auto& press = *static_cast<QMouseEvent*>(event);
        if (press.button() == Qt::RightButton) {
            openMenu(press.position());
            event->accept();
            return true;
        }
    } else if (event->type() == QEvent::KeyPress && asksForMenu(*static_cast<QKeyEvent*>(event))) {
        openMenu(QPointF(0, m_field->height()));
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void TextFieldSupport::openMenu(QPointF place) {
    if (!m_menu)
        m_menu = std::make_unique<MenuWindow>();
    m_menu->setTransientParent(m_field->window());
    m_field->forceActiveFocus(Qt::PopupFocusReason);
    m_menu->popup(menu(), m_field->mapToGlobal(place).toPoint());
}

}  // namespace tidemark
