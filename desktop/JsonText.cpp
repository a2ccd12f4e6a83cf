#include "desktop/JsonText.h"

namespace tidemark {

QByteArray jsonString(QStringView text) {
    const QByteArray utf8 = text.toUtf8();
    QByteArray result;
    result.reserve(utf8.size() + 2);
    result += '"';
    for (const char byte : utf8) {
        if (byte == '"' || byte == '\\') {
            result += '\\';
            result += byte;
        } else if (static_cast<unsigned char>(byte) < 0x20) {
            result += "\\u00" + QByteArray(1, byte).toHex();
        } else {
            result += byte;
        }
    }
    return result += '"';
}

}  // namespace tidemark
