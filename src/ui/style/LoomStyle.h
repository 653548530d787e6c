// SPDX-License-Identifier: MIT
#pragma once

#include <QProxyStyle>

/// A flat look for desktops that bring none: what Qt falls back to there, drawn anew. All colours
/// are those of the palette. A push button with the property `role` stands out: `primary` or
/// `destructive`; so does an entry of a menu that is `destructive`.
class LoomStyle : public QProxyStyle
{
    Q_OBJECT
public:
    LoomStyle();

    /// Gives the program this style, unless the desktop or the user has chosen one.
    static void use();
    /// The colours where the desktop tells none.
    static QPalette lightPalette();

    void polish(QWidget *widget) override;
    using QProxyStyle::polish;
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *data) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption *option,
                    const QWidget *widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &contents,
                           const QWidget *widget) const override;
    QRect subElementRect(SubElement element, const QStyleOption *option,
                         const QWidget *widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex *option, SubControl part,
                         const QWidget *widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override;
    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex *option,
                            QPainter *painter, const QWidget *widget) const override;
};
