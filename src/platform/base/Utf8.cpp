// SPDX-License-Identifier: MIT
#include "Utf8.h"

#include <QJsonDocument>

namespace
{
constexpr QByteArrayView mark("\xEF\xBB\xBF"); // U+FEFF
}

QString readUtf8(QByteArrayView utf8)
{
    const QString text = QString::fromUtf8(utf8);
    return utf8.startsWith(mark) ? QChar(QChar::ByteOrderMark) + text : text;
}

QJsonDocument readJson(QByteArray utf8)
{
    if (utf8.startsWith(mark))
        utf8.remove(0, mark.size());
    return QJsonDocument::fromJson(utf8.replace(mark, "\\ufeff"));
}
