#include "preferences/MaskedFieldAccessible.h"

#include <QAccessible>
#include <QAccessibleObject>
#include <QQuickWindow>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

bool isMaskedField(const QObject* object) {
    return object->inherits("QQuickTextField") && object->property("isMasked").toBool();
}

class MaskedField final : public QAccessibleObject {
public:
    explicit MaskedField(QQuickItem* item) : QAccessibleObject(item) {}

    [[nodiscard]] QAccessibleInterface* parent() const override {
        for (QQuickItem* item = field()->parentItem(); item; item = item->parentItem()) {
            if (QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(item))
                return interface;
        }
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
        const QRectF inWindow = field()->mapRectToScene(field()->boundingRect());
        return window() ? inWindow.toRect().translated(window()->mapToGlobal(QPoint())) : QRect();
    }

    [[nodiscard]] QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? field()->property("label").toString() : QString();
    }

private:
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
