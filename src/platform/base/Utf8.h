// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

class QJsonDocument;

/// The text of `utf8`. Unlike QString::fromUtf8 it keeps a U+FEFF at the beginning, which only in
/// front of a whole file is a mark and none of its text. What is not UTF-8 becomes U+FFFD.
QString readUtf8(QByteArrayView utf8);

/// The document of `utf8`, null when it is none. Unlike QJsonDocument::fromJson it keeps a U+FEFF
/// at the beginning of the texts in it.
QJsonDocument readJson(QByteArray utf8);
