#pragma once

#include <qqmlintegration.h>

#include <QObject>

namespace tidemark {

/// Whether the user moves about with the keyboard at the moment; the focus is shown only then. Windows set
/// it.
class Navigation : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool byKeyboard READ byKeyboard NOTIFY byKeyboardChanged FINAL)

public:
    using QObject::QObject;

    [[nodiscard]] bool byKeyboard() const { return m_byKeyboard; }
    void setByKeyboard(bool byKeyboard) {
        if (byKeyboard == m_byKeyboard)
            return;
        m_byKeyboard = byKeyboard;
        Q_EMIT byKeyboardChanged();
    }

Q_SIGNALS:
    void byKeyboardChanged();

private:
    bool m_byKeyboard = false;
};

}  // namespace tidemark
