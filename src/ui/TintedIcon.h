// SPDX-License-Identifier: MIT
#pragma once

#include "Tone.h"

#include <QIcon>

#include <optional>

class QPalette;

/// The program's own icons, drawn in the colour of the text around them: always right for the
/// palette of the moment and for the pixels of the screen.

/// `name` is that of a file in icons/, without its ending. With a `tone` the icon has its colour.
QIcon tintedIcon(const QString &name, std::optional<Tone> tone = {});

/// The colour of texts of second rank: between text and background, readable on both palettes.
QColor secondaryTextColor(const QPalette &palette);
