// SPDX-License-Identifier: MIT
#include "AppInfo.h"

#include "DebugLog.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

namespace
{

bool isThisMachine(const QString &host)
{
    return host == u"localhost" || host == u"127.0.0.1" || host == u"::1";
}

} // namespace

AppInfo::AppInfo(const QString &path)
{
    constexpr qint64 sizeLimit = 1 << 20;
    const QFileInfo file(path);
    if (file.isFile() && file.size() <= sizeLimit) // no pipe, which would be waited for
        m_path = path;
    else if (file.exists())
        debugLog(path + u": not an information file");
}

QString AppInfo::defaultPath()
{
    if (const QString named = qEnvironmentVariable("STRANDLOOM_INFO"); !named.isEmpty())
        return named;
    const QString own =
        QCoreApplication::applicationDirPath() + u"/../share/strandloom/strandloom.ini";
    if (QFile::exists(own))
        return own;
    return QStandardPaths::locate(QStandardPaths::GenericDataLocation,
                                  QStringLiteral("strandloom/strandloom.ini"));
}

std::optional<QString> AppInfo::value(const QString &key) const
{
    if (m_path.isEmpty())
        return std::nullopt;
    const QString text = QSettings(m_path, QSettings::IniFormat).value(key).toString();
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

std::optional<QUrl> AppInfo::endpoint(const QString &key) const
{
    const QUrl url(value(key).value_or(QString()), QUrl::StrictMode);
    const bool isPermitted =
        url.scheme() == u"https" || (url.scheme() == u"http" && isThisMachine(url.host()));
    if (!url.isValid() || url.host().isEmpty() || !isPermitted)
        return std::nullopt;
    return url;
}
