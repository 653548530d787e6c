// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// `text` with a space for each line break and other control character, so that nothing from
/// outside steers the terminal it is shown on.
inline QString printable(QString text)
{
    for (QChar &character : text) {
        if (character.category() == QChar::Other_Control)
            character = u' ';
    }
    return text;
}
