#pragma once

#include <QObject>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

namespace tidemark {

/// The bus object that launchers and later processes call: org.freedesktop.Application of the Desktop Entry
/// standard. Tidemark opens no files and has no actions, so every call means `activated`.
class ApplicationService final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public Q_SLOTS:
    void Activate(const QVariantMap& platformData);
    void Open(const QStringList& uris, const QVariantMap& platformData);
    void ActivateAction(const QString& name, const QVariantList& parameter, const QVariantMap& platformData);

Q_SIGNALS:
    void activated(const QString& activationToken);
};

}  // namespace tidemark
