// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>

class QPalette;

/// What a colour that is not the palette's own says.
enum class Tone { error, success };

/// Readable, as a text, on the background of `palette`.
QColor toneColor(Tone tone, const QPalette &palette);
