// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

enum class TextCoding { utf8, latin1 };

/// A text as other programs hand it over: what is not UTF-8 is read as Latin-1, and a C string's
/// end is left out.
QString selectionText(const QByteArray &data, TextCoding coding);
