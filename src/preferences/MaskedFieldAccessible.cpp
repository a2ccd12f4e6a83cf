#include "preferences/MaskedFieldAccessible.h"

#include <QAccessible>
#include <QAccessibleObject>
#include <QQuickWindow>
#include <algorithm>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

bool isMaskedField(const QObject* object) {
    return object->inherits("QQuickTextField") && object->property("isMasked").toBool();
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
        return kind == QAccessible::Name ? field()->property("label").toString() : QString();
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
    return className == "QQuickTextField"_L1 && isMaskedField(object)
               ? new MaskedField(static_cast<QQuickItem*>(object))
               : nullptr;
}

}  // namespace

MaskedFieldAccessible::MaskedFieldAccessible(QObject* parent) : QObject(parent) {
    QAccessible::installFactory(&makeMaskedField);
}

void MaskedFieldAccessible::update(QQuickItem* field) {
    // The next one who asks gets the other kind.
    if (QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(field))
        QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(interface));
}

}  // namespace tidemark
