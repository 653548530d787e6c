// SPDX-License-Identifier: MIT
#include "LoginItem.h"

#include "DebugLog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <cerrno>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

/// A text as a value of a desktop entry.
QString entryValue(QString text)
{
    text.replace(u'\\', u"\\\\"_s);
    text.replace(u'\n', u"\\n"_s);
    text.replace(u'\r', u"\\r"_s);
    text.replace(u'\t', u"\\t"_s);
    return text;
}

QString desktopEntry(const QString &program)
{
    return u"[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Strandloom\n"
           "Icon=app.strandloom\n"
           "Terminal=false\n"
           "TryExec="_s
        % entryValue(program) % u"\nExec="_s % quotedForExec(program) % u" --background\n"_s;
}

} // namespace

QString quotedForExec(const QString &argument)
{
    QString quoted;
    for (const QChar character : argument) {
        if (u"\"`$\\"_s.contains(character))
            quoted += u'\\';
        quoted += character;
    }
    quoted.replace(u'%', u"%%"_s); // a lone one begins a field code
    return entryValue(u'"' + quoted + u'"');
}

LoginItem::LoginItem(QString program, const QString &folder)
    : m_program(std::move(program))
    , m_path(folder + u"/app.strandloom.desktop")
{
}

QString LoginItem::autostartFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u"/autostart";
}

bool LoginItem::isRegistered() const
{
    return QFileInfo::exists(m_path);
}

void LoginItem::setLaunchAtLogin(bool launches)
{
    const auto done = launches ? registerProgram() : unregisterProgram();
    if (!done)
        debugLog(u"Failed to set launch at login: " + description(done.error()));
}

Expected<void, FileError> LoginItem::registerProgram()
{
    QDir().mkpath(QFileInfo(m_path).path()); // the file's own error tells when that failed
    return AtomicFile::replace(m_path, desktopEntry(m_program).toUtf8());
}

Expected<void, FileError> LoginItem::unregisterProgram()
{
    if (unlink(QFile::encodeName(m_path).constData()) != 0)
        return Unexpected{FileError{m_path, errno}};
    return {};
}
