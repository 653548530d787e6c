// SPDX-License-Identifier: MIT
#include "AppInfo.h"

#include <QSettings>
#include <QStandardPaths>

AppInfo::AppInfo(QString path)
    : m_path(std::move(path))
{
}

QString AppInfo::defaultPath()
{
    if (const QString named = qEnvironmentVariable("STRANDLOOM_INFO"); !named.isEmpty())
        return named;
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
