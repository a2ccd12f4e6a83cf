#include "platform/x11/XSettings.h"

#include <xcb/xcb.h>

#include <QtEndian>
#include <cstdlib>
#include <memory>
#include <optional>

#include "platform/x11/XServer.h"

namespace tidemark {
namespace {

enum class SettingType : quint8 { number = 0, text = 1, color = 2 };

/// Reads the property from its beginning. A value that exceeds its end is empty, and so are all values after
/// it.
class SettingsReader {
public:
    explicit SettingsReader(const QByteArray& property)
        : m_bytes(property), m_isBigEndian(!property.isEmpty() && property.front() == 1) {
        // Byte order, padding and serial number.
        take(8);
    }

    [[nodiscard]] bool isAtEnd() const { return m_position >= m_bytes.size(); }

    template <typename T>
    T number() {
        const QByteArray bytes = take(sizeof(T));
        if (bytes.isEmpty())
            return 0;
        return m_isBigEndian ? qFromBigEndian<T>(bytes.constData()) : qFromLittleEndian<T>(bytes.constData());
    }

    /// Bytes that are followed by padding to a multiple of four.
    QByteArray padded(quint32 size) {
        QByteArray bytes = take(size);
        take((4 - (qint64{size} % 4)) % 4);
        return bytes;
    }

    QByteArray take(qint64 size) {
        if (size > m_bytes.size() - m_position) {
            m_position = m_bytes.size();
            return {};
        }
        QByteArray bytes = m_bytes.mid(m_position, size);
        m_position += size;
        return bytes;
    }

private:
    QByteArray m_bytes;
    bool m_isBigEndian;
    qsizetype m_position = 0;
};

}  // namespace

QString xSettingsText(const QByteArray& property, const QByteArray& name) {
    SettingsReader reader(property);
    reader.number<quint32>();
    while (!reader.isAtEnd()) {
        const auto type = static_cast<SettingType>(reader.number<quint8>());
        reader.take(1);
        const QByteArray found = reader.padded(reader.number<quint16>());
        reader.number<quint32>();
        switch (type) {
            case SettingType::number:
                reader.take(4);
                break;
            case SettingType::text: {
                const QByteArray text = reader.padded(reader.number<quint32>());
                if (found == name)
                    return QString::fromUtf8(text);
                break;
            }
            case SettingType::color:
                reader.take(8);
                break;
            default:
                return {};
        }
    }
    return {};
}

QString xSettingsText(const XServer& server, const QByteArray& name) {
    const uint32_t manager = server.ownerOf("_XSETTINGS_S0");
    return manager == XCB_WINDOW_NONE ? QString()
                                      : xSettingsText(server.property(manager, "_XSETTINGS_SETTINGS"), name);
}

}  // namespace tidemark
