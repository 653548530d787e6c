// SPDX-License-Identifier: MIT
#include "Preferences.h"

#include "Calendar.h"
#include "DebugLog.h"

#include <QDateTime>
#include <QStandardPaths>

Preferences::Preferences(const QString &path, QObject *parent)
    : QObject(parent)
    , m_settings(path, QSettings::IniFormat)
{
}

QString Preferences::defaultPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + u"/strandloom/settings.ini";
}

std::optional<bool> Preferences::boolean(QLatin1StringView key) const
{
    const QString text = m_settings.value(key).toString().toLower();
    if (text == u"true" || text == u"1")
        return true;
    if (text == u"false" || text == u"0")
        return false;
    return std::nullopt;
}

std::optional<int> Preferences::integer(QLatin1StringView key) const
{
    bool isNumber = false;
    const int number = m_settings.value(key).toString().toInt(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

std::optional<QString> Preferences::string(QLatin1StringView key) const
{
    if (!m_settings.contains(key))
        return std::nullopt;
    return m_settings.value(key).toString();
}

std::optional<Instant> Preferences::date(QLatin1StringView key) const
{
    const QDateTime date =
        QDateTime::fromString(m_settings.value(key).toString(), Qt::ISODateWithMs);
    return date.isValid() ? std::optional(instantOf(date)) : std::nullopt;
}

void Preferences::set(QLatin1StringView key, bool value)
{
    write(key, value);
}

void Preferences::set(QLatin1StringView key, int value)
{
    write(key, value);
}

void Preferences::set(QLatin1StringView key, const QString &value)
{
    write(key, value);
}

void Preferences::set(QLatin1StringView key, Instant value)
{
    write(key, dateTimeOf(value).toUTC().toString(Qt::ISODateWithMs));
}

void Preferences::write(QLatin1StringView key, const QVariant &value)
{
    m_settings.setValue(key, value);
    m_settings.sync();
    if (m_settings.status() != QSettings::NoError)
        debugLog(u"Failed to write preferences: " + m_settings.fileName());
    Q_EMIT changed(key);
}
