// SPDX-License-Identifier: MIT
#include "SelectionText.h"

#include <QStringDecoder>

namespace
{

QString decodeUtf8(const QByteArray &data)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(data);
    return decoder.hasError() ? QString::fromLatin1(data) : text;
}

} // namespace

QString selectionText(const QByteArray &data, TextCoding coding)
{
    QString text = coding == TextCoding::latin1 ? QString::fromLatin1(data) : decodeUtf8(data);
    if (text.endsWith(QChar::Null))
        text.chop(1);
    return text;
}
