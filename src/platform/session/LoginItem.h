#pragma once

#include <QString>

namespace tidemark {

/// The registration of this program to start at login.
class LoginItem {
public:
    enum class Status : quint8 { notRegistered, enabled, requiresApproval, notFound };

    LoginItem() = default;
    LoginItem(const LoginItem&) = delete;
    LoginItem& operator=(const LoginItem&) = delete;
    virtual ~LoginItem() = default;

    [[nodiscard]] virtual Status status() const = 0;
    /// False when the entry could not be written.
    [[nodiscard]] virtual bool registerItem() = 0;
    /// False when the entry could not be removed.
    [[nodiscard]] virtual bool unregisterItem() = 0;
};

/// An entry in the user's autostart folder (XDG autostart standard 0.5). A hidden or disabled entry has the
/// status `requiresApproval`, an entry whose program does not exist `notFound`. Registering keeps other keys
/// and comments that the user has added to an entry.
class AutostartLoginItem final : public LoginItem {
public:
    /// `folder` is the autostart folder, `identifier` the name of the file in it without its suffix,
    /// `program` the path of the program to start, and `name` its name for the user.
    AutostartLoginItem(const QString& folder, const QString& identifier, QString name, QString program);

    [[nodiscard]] Status status() const override;
    [[nodiscard]] bool registerItem() override;
    [[nodiscard]] bool unregisterItem() override;

private:
    QString m_path;
    QString m_name;
    QString m_program;
};

}  // namespace tidemark
