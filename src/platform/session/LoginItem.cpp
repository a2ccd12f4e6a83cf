#include "platform/session/LoginItem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSaveFile>
#include <QStandardPaths>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

/// A value of type string, after the Desktop Entry standard.
QString escaped(const QString& value) {
    QString result;
    for (const QChar c : value)
        if (c == QLatin1Char('\\'))
            result += "\\\\"_L1;
        else if (c == QLatin1Char('\n'))
            result += "\\n"_L1;
        else if (c == QLatin1Char('\r'))
            result += "\\r"_L1;
        else if (c == QLatin1Char('\t'))
            result += "\\t"_L1;
        else
            result += c;
    return result;
}

QString unescaped(const QString& value) {
    static const QHash<QChar, QChar> codes{{u's', u' '}, {u'n', u'\n'}, {u't', u'\t'}, {u'r', u'\r'}};
    QString result;
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value[i] == QLatin1Char('\\') && i + 1 < value.size()) {
            ++i;
            result += codes.value(value[i], value[i]);
        } else {
            result += value[i];
        }
    }
    return result;
}

/// The program as one argument of an Exec value, always quoted.
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

/// The values of the group "Desktop Entry" as they stand in the file.
QHash<QString, QString> readEntry(QFile& file) {
    QHash<QString, QString> values;
    bool isInGroup = false;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.startsWith(QLatin1Char('[')))
            isInGroup = line == "[Desktop Entry]"_L1;
        const qsizetype separator = line.indexOf(QLatin1Char('='));
        if (isInGroup && separator > 0 && !line.startsWith(QLatin1Char('#')))
            values.insert(line.first(separator).trimmed(), line.sliced(separator + 1).trimmed());
    }
    return values;
}

}  // namespace

AutostartLoginItem::AutostartLoginItem(const QString& folder, const QString& identifier, QString name,
                                       QString program)
    : m_path(QDir(folder).filePath(identifier + u".desktop"_s)),
      m_name(std::move(name)),
      m_program(std::move(program)) {}

LoginItem::Status AutostartLoginItem::status() const {
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return Status::notRegistered;
    const auto entry = readEntry(file);
    // What the control panels of the desktops write when the user switches an entry off.
    if (entry.value(u"Hidden"_s) == "true"_L1 || entry.value(u"X-GNOME-Autostart-enabled"_s) == "false"_L1)
        return Status::requiresApproval;
    const QString tryExec = u"TryExec"_s;
    if (entry.contains(tryExec) && !isInstalled(unescaped(entry.value(tryExec))))
        return Status::notFound;
    const QString program = programOf(unescaped(entry.value(u"Exec"_s)));
    return isInstalled(program) ? Status::enabled : Status::notFound;
}

bool AutostartLoginItem::registerItem() {
    if (!QDir().mkpath(QFileInfo(m_path).path()))
        return false;
    const QString text =
        QStringLiteral(
            "[Desktop Entry]\n"
            "Type=Application\n"
            "Name=%1\n"
            "Exec=%2\n"
            "Icon=%3\n"
            "Terminal=false\n"
            "X-GNOME-Autostart-enabled=true\n")
            .arg(escaped(m_name), escaped(quoted(m_program)), escaped(QFileInfo(m_path).completeBaseName()));
    QSaveFile file(m_path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(text.toUtf8());
    return file.commit();
}

bool AutostartLoginItem::unregisterItem() {
    return !QFileInfo::exists(m_path) || QFile::remove(m_path);
}

}  // namespace tidemark
