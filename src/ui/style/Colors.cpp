// SPDX-License-Identifier: MIT
#include "style/Colors.h"

#include <QPalette>

#include <algorithm>
#include <cmath>

namespace
{

double linear(double part)
{
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

double luminance(const QColor &color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF())
        + 0.0722 * linear(color.blueF());
}

} // namespace

double contrast(const QColor &one, const QColor &other)
{
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor blended(const QColor &color, const QColor &ground, double share)
{
    const auto part = [share](int of, int with) { return int(of * share + with * (1 - share)); };
    return QColor(part(color.red(), ground.red()), part(color.green(), ground.green()),
                  part(color.blue(), ground.blue()));
}

QColor outlineColor(const QPalette &palette)
{
    return blended(palette.color(QPalette::WindowText), palette.color(QPalette::Base), 0.56);
}

QColor destructiveColor()
{
    return QColor(0xc8, 0x32, 0x2b);
}
