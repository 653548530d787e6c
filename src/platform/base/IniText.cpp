// SPDX-License-Identifier: MIT
#include "IniText.h"

#include <QList>

#include <algorithm>
#include <cctype>

namespace
{

constexpr QByteArrayView generalHeader("[General]");

bool isPlain(const QByteArray &text)
{
    return std::all_of(text.begin(), text.end(), [](unsigned char c) {
        return std::isalnum(c) || c == '.' || c == '-' || c == ':' || c == '_';
    });
}

/// What QSettings reads as `value`.
QByteArray encoded(const QString &value)
{
    const QByteArray text = value.toUtf8();
    if (isPlain(text) && !text.isEmpty())
        return text;
    QByteArray quoted = text.startsWith('@') ? "\"@" : "\""; // a single one begins a typed value
    bool isAfterNumber = false; // whose digits would go on
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isControl = byte < 0x20 || byte == 0x7f;
        if (isControl || (isAfterNumber && std::isxdigit(byte)))
            quoted += "\\x" + QByteArray::number(byte, 16);
        else if (c == '"' || c == '\\')
            quoted += QByteArray("\\") + c;
        else
            quoted += c;
        isAfterNumber = isControl || (isAfterNumber && std::isxdigit(byte));
    }
    return quoted + '"';
}

bool isGeneral(const QByteArray &header)
{
    return header.compare(generalHeader, Qt::CaseInsensitive) == 0;
}

bool isValueOf(QByteArrayView key, const QByteArray &line)
{
    const auto end = line.indexOf('=');
    return end >= 0 && line.first(end).trimmed() == key;
}

} // namespace

QByteArray withIniValue(const QByteArray &text, QByteArrayView key, const QString &value)
{
    const bool hasMark = text.startsWith("\xEF\xBB\xBF"); // counts at the beginning only
    QList<QByteArray> kept;
    bool isInGeneral = true;
    for (const QByteArray &line : (hasMark ? text.sliced(3) : text).split('\n')) {
        if (const QByteArray trimmed = line.trimmed(); trimmed.startsWith('['))
            isInGeneral = isGeneral(trimmed);
        if (!isInGeneral || !isValueOf(key, line))
            kept.append(line);
    }
    // Before all other lines, because a damaged one may hide those that follow.
    if (isGeneral(kept.first().trimmed()))
        kept.removeFirst();
    const QByteArray head = generalHeader + '\n' + key + '=' + encoded(value) + '\n';
    return head + kept.join('\n');
}
