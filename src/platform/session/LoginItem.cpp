#include "platform/session/LoginItem.h"

#include <glib.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <memory>
#include <utility>

#include "platform/base/FileWriting.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

struct FreeEntry {
    void operator()(GKeyFile* entry) const { g_key_file_unref(entry); }
};
using Entry = std::unique_ptr<GKeyFile, FreeEntry>;

struct FreeText {
    void operator()(char* text) const { g_free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

constexpr const char* group = G_KEY_FILE_DESKTOP_GROUP;

/// The entry in the file with its comments; empty when the file is no key file. Nothing when it cannot be
/// read.
Entry readEntry(const QString& path) {
    constexpr qint64 maximumSize = qint64{1024} * 1024;
    const auto data = readFile(path, maximumSize);
    if (!data)
        return nullptr;
    Entry entry(g_key_file_new());
    constexpr auto flags = GKeyFileFlags(G_KEY_FILE_KEEP_COMMENTS | G_KEY_FILE_KEEP_TRANSLATIONS);
    if (g_key_file_load_from_data(entry.get(), data->constData(), data->size(), flags, nullptr) == FALSE)
        entry.reset(g_key_file_new());
    return entry;
}

/// The value of type string, empty when there is none.
QString value(const Entry& entry, const char* key) {
    return QString::fromUtf8(Text(g_key_file_get_string(entry.get(), group, key, nullptr)).get()).trimmed();
}

void setValue(const Entry& entry, const char* key, const QString& value) {
    g_key_file_set_string(entry.get(), group, key, value.toUtf8().constData());
}

/// The program as an argument of an Exec value, always quoted.
QString quoted(const QString& program) {
    QString result = u"\""_s;
    for (const QChar c : program) {
        if (QStringView(u"\"`$\\").contains(c))
            result += QLatin1Char('\\');
        result += c;
        if (c == QLatin1Char('%'))
            result += c;
    }
    return result + QLatin1Char('"');
}

/// The first argument of an Exec value.
QString programOf(const QString& exec) {
    const bool isQuoted = exec.startsWith(QLatin1Char('"'));
    QString result;
    for (qsizetype i = isQuoted ? 1 : 0; i < exec.size(); ++i) {
        if (exec[i] == QLatin1Char(isQuoted ? '"' : ' '))
            break;
        if (i + 1 < exec.size() &&
            (exec[i] == QLatin1Char('%') || (isQuoted && exec[i] == QLatin1Char('\\'))))
            ++i;
        result += exec[i];
    }
    return result;
}

bool isInstalled(const QString& program) {
    return !program.isEmpty() && !QStandardPaths::findExecutable(program).isEmpty();
}

}  // namespace

AutostartLoginItem::AutostartLoginItem(const QString& folder, const QString& identifier, QString name,
                                       QString program)
    : m_path(QDir(folder).filePath(identifier + u".desktop"_s)),
      m_name(std::move(name)),
      m_program(std::move(program)) {}

LoginItem::Status AutostartLoginItem::status() const {
    const Entry entry = readEntry(m_path);
    if (!entry)
        return Status::notRegistered;
    // The control panels of desktops write one of these when the user disables an entry.
    if (value(entry, "Hidden") == "true"_L1 || value(entry, "X-GNOME-Autostart-enabled") == "false"_L1)
        return Status::requiresApproval;
    const bool hasTryExec = g_key_file_has_key(entry.get(), group, "TryExec", nullptr) != FALSE;
    if (hasTryExec && !isInstalled(value(entry, "TryExec")))
        return Status::notFound;
    return isInstalled(programOf(value(entry, "Exec"))) ? Status::enabled : Status::notFound;
}

bool AutostartLoginItem::registerItem() {
    if (!QDir().mkpath(QFileInfo(m_path).path()))
        return false;
    Entry entry = readEntry(m_path);
    if (!entry)
        entry.reset(g_key_file_new());
    setValue(entry, "Type", u"Application"_s);
    setValue(entry, "Name", m_name);
    setValue(entry, "Exec", quoted(m_program));
    setValue(entry, "Icon", QFileInfo(m_path).completeBaseName());
    setValue(entry, "Terminal", u"false"_s);
    setValue(entry, "X-GNOME-Autostart-enabled", u"true"_s);
    for (const char* key : {"Hidden", "TryExec"})
        g_key_file_remove_key(entry.get(), group, key, nullptr);
    gsize size = 0;
    const Text text(g_key_file_to_data(entry.get(), &size, nullptr));
    constexpr auto permissions = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther;
    return replaceFile(m_path, QByteArray(text.get(), static_cast<qsizetype>(size)), permissions).has_value();
}

bool AutostartLoginItem::unregisterItem() {
    return !QFileInfo::exists(m_path) || QFile::remove(m_path);
}

}  // namespace tidemark
