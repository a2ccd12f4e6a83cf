#pragma once

#include <QByteArray>
#include <QString>

namespace tidemark {

class XServer;

/// The text of a setting in the property of a settings manager, after the XSETTINGS protocol (0.5); empty
/// when it is not there, is no text, or the property is malformed.
[[nodiscard]] QString xSettingsText(const QByteArray& property, const QByteArray& name);

/// The text of a setting that the desktop publishes on the first screen of an X server, such as
/// "Net/ThemeName"; empty when there is none.
[[nodiscard]] QString xSettingsText(const XServer& server, const QByteArray& name);

}  // namespace tidemark
