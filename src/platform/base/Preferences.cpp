// SPDX-License-Identifier: MIT
#include "Preferences.h"

#include "Calendar.h"
#include "DebugLog.h"
#include "FilePresence.h"
#include "IniText.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

#include <cerrno>

using namespace Qt::StringLiterals;

namespace
{

constexpr qint64 sizeLimit = 1 << 20; // bytes; a thousand times what is ever written

/// QSettings does the reading alone: where a lock file was left behind, its writing waits for ever.
QHash<QString, QString> valuesIn(const QString &path)
{
    const auto hasFile = isThere(path);
    if (hasFile && !*hasFile)
        return {};
    const QFileInfo file(path);
    const bool isReadable =
        hasFile && file.isFile() && file.isReadable() && file.size() <= sizeLimit;
    if (!isReadable) {
        debugLog(u"Failed to read preferences: " + path);
        return {};
    }
    const QSettings settings(path, QSettings::IniFormat);
    if (settings.status() != QSettings::NoError)
        debugLog(u"Preferences are damaged: " + path);
    QHash<QString, QString> values;
    for (const QString &key : settings.childKeys()) {
        const QVariant value = settings.value(key);
        if (value.typeId() == QMetaType::QString) // and no list or another typed value
            values.insert(key, value.toString());
    }
    return values;
}

/// What is to stay of the file at `path`.
Expected<QByteArray, FileError> textOf(const QString &path)
{
    const auto hasFile = isThere(path);
    if (!hasFile)
        return Unexpected{hasFile.error()};
    if (!*hasFile)
        return QByteArray();
    const QFileInfo info(path);
    QFile file(path);
    if (!info.isFile() || !file.open(QIODevice::ReadOnly))
        return Unexpected{FileError{path, info.isDir() ? EISDIR : EACCES}};
    if (file.size() <= sizeLimit) {
        QByteArray text = file.readAll();
        if (file.error() != QFile::NoError)
            return Unexpected{FileError{path, EIO}}; // half a text would replace the whole
        return text;
    }
    const QString aside = path + u".damaged";
    QFile::remove(aside);
    if (!file.rename(aside))
        return Unexpected{FileError{path, EFBIG}};
    return QByteArray();
}

} // namespace

Preferences::Preferences(const QString &path, QObject *parent)
    : QObject(parent)
    , m_path(path)
    , m_values(valuesIn(path))
{
}

QString Preferences::defaultPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + u"/strandloom/settings.ini";
}

std::optional<bool> Preferences::boolean(QLatin1StringView key) const
{
    const QString text = m_values.value(key).toLower();
    if (text == u"true" || text == u"1")
        return true;
    if (text == u"false" || text == u"0")
        return false;
    return std::nullopt;
}

std::optional<int> Preferences::integer(QLatin1StringView key) const
{
    bool isNumber = false;
    const int number = m_values.value(key).toInt(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

std::optional<QString> Preferences::string(QLatin1StringView key) const
{
    const auto value = m_values.find(key);
    return value == m_values.end() ? std::nullopt : std::optional(*value);
}

std::optional<Instant> Preferences::date(QLatin1StringView key) const
{
    const QDateTime date = QDateTime::fromString(m_values.value(key), Qt::ISODateWithMs);
    return date.isValid() ? std::optional(instantOf(date)) : std::nullopt;
}

void Preferences::set(QLatin1StringView key, bool value)
{
    keep(key, value ? u"true"_s : u"false"_s);
}

void Preferences::set(QLatin1StringView key, int value)
{
    keep(key, QString::number(value));
}

void Preferences::set(QLatin1StringView key, const QString &value)
{
    keep(key, value);
}

void Preferences::set(QLatin1StringView key, Instant value)
{
    keep(key, dateTimeOf(value).toUTC().toString(Qt::ISODateWithMs));
}

void Preferences::keep(QLatin1StringView key, const QString &value)
{
    m_values.insert(key, value);
    if (const auto written = write(key, value); !written)
        debugLog(u"Failed to write preferences: " + description(written.error()));
    Q_EMIT changed(key);
}

Expected<void, FileError> Preferences::write(QLatin1StringView key, const QString &value) const
{
    QDir().mkpath(QFileInfo(m_path).path()); // the file's own error tells when that failed
    const auto text = textOf(m_path);
    if (!text)
        return Unexpected{text.error()};
    return AtomicFile::replace(m_path, withIniValue(*text, key, value), FileAudience::owner);
}
