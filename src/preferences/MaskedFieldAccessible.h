#pragma once

#include <qqmlintegration.h>

#include <QObject>
#include <QQuickItem>

namespace tidemark {

/// What assistive tools get to know of a field that is masked: that it is there, what it is for, where it is,
/// and whether it has the focus. Qt itself hands out the whole text of such a field, and withholds its name.
class MaskedFieldAccessible : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    explicit MaskedFieldAccessible(QObject* parent = nullptr);

    /// To be called when a text field was masked or unmasked.
    Q_INVOKABLE static void update(QQuickItem* field);
};

}  // namespace tidemark
