// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>

class QPalette;

/// The colours that controls are drawn in, made of those of a palette.

/// The contrast of two colours as WCAG 2 measures it, from 1 to 21.
double contrast(const QColor &one, const QColor &other);
/// `share` of `color`, from 0 to 1, over `ground`.
QColor blended(const QColor &color, const QColor &ground, double share);

/// Of fields and check boxes: at least 3 to 1 against windows and fields.
QColor outlineColor(const QPalette &palette);
/// Behind white text, for what cannot be undone.
QColor destructiveColor();
