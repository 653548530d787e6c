// SPDX-License-Identifier: MIT
#include "Tone.h"

#include <QPalette>

QColor toneColor(Tone tone, const QPalette &palette)
{
    const bool isDark = palette.color(QPalette::Base).lightness() < 128;
    switch (tone) {
    case Tone::error:
        return isDark ? QColor(0xff, 0x8a, 0x84) : QColor(0xb8, 0x1c, 0x24);
    case Tone::success:
        return isDark ? QColor(0x6f, 0xd3, 0x8b) : QColor(0x18, 0x70, 0x38);
    }
    Q_UNREACHABLE();
}
