#pragma once

#include <QQuickItem>

#include "platform/windows/Menu.h"

namespace tidemark {

/// Whether the item is a text field.
[[nodiscard]] bool isTextField(const QQuickItem* item);

/// What can be done with the text of a field at the moment. Of a masked one nothing can be copied. The
/// entries do nothing once the field is gone.
[[nodiscard]] Menu textFieldMenu(QQuickItem* field);

}  // namespace tidemark
