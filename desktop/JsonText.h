#pragma once

#include <QByteArray>
#include <QStringView>

namespace tidemark {

/// `text` as a JSON string in UTF-8, quotes included (RFC 8259). A lone surrogate becomes a question mark.
///
/// For documents whose members have an order of their own, or that are too long for QJsonDocument to build
/// on the UI thread.
[[nodiscard]] QByteArray jsonString(QStringView text);

}  // namespace tidemark
