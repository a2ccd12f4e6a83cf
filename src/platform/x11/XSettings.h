#pragma once

#include <QByteArray>
#include <QString>

namespace tidemark {

class XServer;

/// The value of a string setting in the property of a settings manager (XSETTINGS protocol 0.5); empty when
/// there is none or the property is malformed.
[[nodiscard]] QString xSettingsText(const QByteArray& property, const QByteArray& name);

/// The value of a string setting, such as "Net/ThemeName", that the desktop publishes on the server's first
/// screen; empty when there is none.
[[nodiscard]] QString xSettingsText(const XServer& server, const QByteArray& name);

}  // namespace tidemark
