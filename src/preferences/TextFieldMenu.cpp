#include "preferences/TextFieldMenu.h"

#include <QMetaObject>
#include <QPointer>

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

}  // namespace

bool isTextField(const QQuickItem* item) {
    return item && item->inherits("QQuickTextField");
}

Menu textFieldMenu(QQuickItem* field) {
    const bool isMasked = field->property("isMasked").toBool();
    const bool canCopy = !isMasked && !field->property("selectedText").toString().isEmpty();
    const bool hasText = field->property("length").toInt() > 0;
    return {fieldEntry(field, u"Cut"_s, "cut", canCopy), fieldEntry(field, u"Copy"_s, "copy", canCopy),
            fieldEntry(field, u"Paste"_s, "paste", field->property("canPaste").toBool()),
            MenuItem{.identifier = u"separator"_s, .isSeparator = true},
            fieldEntry(field, u"Select All"_s, "selectAll", hasText)};
}

}  // namespace tidemark
