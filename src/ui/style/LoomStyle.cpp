// SPDX-License-Identifier: MIT
#include "style/LoomStyle.h"

#include "Tone.h"
#include "style/Colors.h"
#include "style/DevicePixels.h"

#include <QApplication>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOption>

using namespace Qt::StringLiterals;

namespace
{

constexpr int radius = 6;
constexpr int besideText = 12;
constexpr int lowestControl = 30;
constexpr int indicator = 18;
constexpr int arrowRoom = 28;
constexpr int stepperRoom = 24;
constexpr int ringWidth = 2;
constexpr int aboveTabs = 12; // of a window

bool isSet(const QStyleOption &option, QStyle::StateFlag flag)
{
    return option.state.testFlag(flag);
}

QString roleOf(const QObject *object)
{
    return object ? object->property("role").toString() : QString();
}

/// The ground of a button that does not stand out, and of the like.
QColor groundColor(const QStyleOption &option)
{
    const double share = isSet(option, QStyle::State_Sunken) ? 0.24
        : isSet(option, QStyle::State_MouseOver)             ? 0.18
                                                             : 0.12;
    const QPalette &palette = option.palette;
    return blended(palette.color(QPalette::WindowText), palette.color(QPalette::Base), share);
}

struct ButtonColors {
    QColor ground, text, ring;
};

ButtonColors buttonColors(const QStyleOption &option, const QWidget *widget)
{
    const QPalette &palette = option.palette;
    const QString role = isSet(option, QStyle::State_Enabled) ? roleOf(widget) : QString();
    if (role.isEmpty())
        return {groundColor(option), palette.color(QPalette::ButtonText),
                palette.color(QPalette::Highlight)};
    const bool isPrimary = role == u"primary";
    const QColor color = isPrimary ? palette.color(QPalette::Highlight) : destructiveColor();
    const QColor text = isPrimary ? palette.color(QPalette::HighlightedText) : Qt::white;
    const double share = isSet(option, QStyle::State_Sunken) ? 0.8
        : isSet(option, QStyle::State_MouseOver)             ? 0.9
                                                             : 1;
    return {blended(color, Qt::black, share), text, text};
}

void drawRing(QPainter &painter, const QRectF &rect, const QColor &color, int cornerRadius = radius)
{
    draw(painter, {rect, qreal(cornerRadius), Qt::transparent, color, ringWidth});
}

void drawButton(QPainter &painter, const QStyleOption &option, const QWidget *widget)
{
    const ButtonColors colors = buttonColors(option, widget);
    const auto *const button = qstyleoption_cast<const QStyleOptionButton *>(&option);
    const bool isFlat = button && button->features.testFlag(QStyleOptionButton::Flat);
    if (!isFlat || option.state & (QStyle::State_MouseOver | QStyle::State_Sunken))
        draw(painter, {QRectF(option.rect), radius, colors.ground});
    if (!isSet(option, QStyle::State_HasFocus))
        return;
    const bool isOnColor = colors.ring == colors.text; // seen only with a gap to the window
    const QRect ring = isOnColor ? option.rect.adjusted(2, 2, -2, -2) : option.rect;
    drawRing(painter, ring, colors.ring, isOnColor ? radius - 2 : radius);
}

void drawField(QPainter &painter, const QStyleOption &option)
{
    const QPalette &palette = option.palette;
    const bool hasFocus = isSet(option, QStyle::State_HasFocus);
    draw(painter,
         {QRectF(option.rect), radius, palette.color(QPalette::Base),
          hasFocus ? palette.color(QPalette::Highlight) : outlineColor(palette),
          hasFocus ? ringWidth : 1});
}

void drawLines(QPainter &painter, const QPolygonF &points, const QColor &color, qreal width = 1.6)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(points);
    painter.restore();
}

void drawChevron(QPainter &painter, const QRect &rect, bool isUp, const QStyleOption &option)
{
    const QPointF middle = QRectF(rect).center();
    const qreal rise = isUp ? -2 : 2;
    const auto group = isSet(option, QStyle::State_Enabled) ? QPalette::Active : QPalette::Disabled;
    drawLines(painter,
              {middle + QPointF(-4, -rise), middle + QPointF(0, rise), middle + QPointF(4, -rise)},
              option.palette.color(group, QPalette::Text));
}

void drawCheckBox(QPainter &painter, const QStyleOption &option)
{
    const QPalette &palette = option.palette;
    const bool isOn = isSet(option, QStyle::State_On);
    const QColor accent = palette.color(QPalette::Highlight);
    draw(painter,
         {QRectF(option.rect), 4, isOn ? accent : palette.color(QPalette::Base),
          isOn ? accent : outlineColor(palette)});
    if (!isOn)
        return;
    const QPointF corner = option.rect.topLeft();
    const qreal unit = option.rect.width() / 18.0;
    drawLines(painter,
              {corner + QPointF(4.5, 9.5) * unit, corner + QPointF(7.5, 12.5) * unit,
               corner + QPointF(13.5, 5.5) * unit},
              palette.color(QPalette::HighlightedText), 2);
}

/// One of the segments of a bar: the bar's ground, and on it what is selected.
void drawSegment(QPainter &painter, const QStyleOptionTab &tab)
{
    using Tab = QStyleOptionTab;
    const bool isRightToLeft = tab.direction == Qt::RightToLeft;
    const bool isFirst = tab.position == Tab::Beginning || tab.position == Tab::OnlyOneTab;
    const bool isLast = tab.position == Tab::End || tab.position == Tab::OnlyOneTab;
    const bool isLeft = isRightToLeft ? isLast : isFirst,
               isRight = isRightToLeft ? isFirst : isLast;
    const QPalette &palette = tab.palette;
    const QColor text = palette.color(QPalette::WindowText);
    painter.save();
    painter.setClipRect(tab.rect);
    const QRect ground = tab.rect.adjusted(isLeft ? 0 : -radius, 0, isRight ? 0 : radius, 0);
    draw(painter, {QRectF(ground), radius, blended(text, palette.color(QPalette::Base), 0.1)});
    painter.restore();
    const QRect pill = tab.rect.adjusted(2, 2, -2, -2);
    if (isSet(tab, QStyle::State_Selected))
        draw(painter,
             {QRectF(pill), radius - 2, palette.color(QPalette::Base),
              blended(text, palette.color(QPalette::Base), 0.3)});
    if (isSet(tab, QStyle::State_HasFocus))
        drawRing(painter, pill, palette.color(QPalette::Highlight), radius - 2);
}

void drawProgress(QPainter &painter, const QStyleOptionProgressBar &bar, const QColor &color,
                  double share)
{
    QRectF rect(bar.rect);
    rect.setWidth(rect.width() * share);
    if (bar.direction == Qt::RightToLeft)
        rect.moveRight(QRectF(bar.rect).right());
    draw(painter, {rect, std::min(rect.width(), rect.height()) / 2, color});
}

/// A thin thumb over the content, without a trough.
void drawScrollBar(QPainter &painter, const QStyleOptionSlider &bar, QRect thumb)
{
    const bool isUpright = bar.orientation == Qt::Vertical;
    const bool isWide = bar.state & (QStyle::State_MouseOver | QStyle::State_Sunken);
    const int thin = isWide ? 1 : 3;
    thumb = isUpright ? thumb.adjusted(thin, 2, -2, -2) : thumb.adjusted(2, thin, -2, -2);
    draw(painter,
         {QRectF(thumb), std::min(thumb.width(), thumb.height()) / 2.0, outlineColor(bar.palette)});
}

} // namespace

LoomStyle::LoomStyle()
    : QProxyStyle(u"fusion"_s)
{
}

void LoomStyle::use()
{
    const bool isFallback = QApplication::style()->name() == u"fusion"_s;
    if (!isFallback || !qEnvironmentVariableIsEmpty("QT_STYLE_OVERRIDE"))
        return;
    QApplication::setStyle(new LoomStyle);
    const QPalette palette = QApplication::palette();
    const QColor window = palette.color(QPalette::Window);
    if (contrast(window, Qt::black) > contrast(window, Qt::white)) // else the desktop is dark
        QApplication::setPalette(lightPalette());
}

QPalette LoomStyle::lightPalette()
{
    const QColor window(0xf6, 0xf6, 0xf8), text(0x1c, 0x1d, 0x21), faint(0x6a, 0x6c, 0x74);
    QPalette palette(window, window);
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, text);
        palette.setColor(QPalette::Disabled, role, QColor(0x9a, 0x9c, 0xa4));
    }
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::ToolTipBase, Qt::white);
    palette.setColor(QPalette::Mid, QColor(0xd4, 0xd5, 0xda));
    palette.setColor(QPalette::Link, QColor(0x1d, 0x56, 0xd0));
    palette.setColor(QPalette::Highlight, QColor(0x25, 0x63, 0xeb));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, faint);
    return palette;
}

void LoomStyle::polish(QWidget *widget)
{
    QProxyStyle::polish(widget);
    if (qobject_cast<QScrollBar *>(widget))
        widget->setAttribute(Qt::WA_OpaquePaintEvent, false); // it lies over the content
}

int LoomStyle::styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                         QStyleHintReturn *data) const
{
    switch (hint) {
    case SH_ScrollBar_Transient:
        return 1;
    case SH_TabBar_Alignment:
        return Qt::AlignCenter;
    case SH_DialogButtonBox_ButtonsHaveIcons:
    case SH_EtchDisabledText:
    case SH_DitherDisabledText:
    case SH_ScrollView_FrameOnlyAroundContents:
        return 0;
    default:
        return QProxyStyle::styleHint(hint, option, widget, data);
    }
}

int LoomStyle::pixelMetric(PixelMetric metric, const QStyleOption *option,
                           const QWidget *widget) const
{
    switch (metric) {
    case PM_ButtonMargin:
        return 2 * besideText;
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
    case PM_TabBarTabShiftHorizontal:
    case PM_TabBarTabShiftVertical:
    case PM_TabBarTabOverlap:
    case PM_TabBarBaseOverlap:
    case PM_ButtonDefaultIndicator:
        return 0;
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
        return indicator;
    case PM_CheckBoxLabelSpacing:
        return 8;
    case PM_ScrollBarExtent:
        return 10;
    case PM_ScrollBarSliderMin:
        return 32;
    case PM_TabBarTabHSpace:
        return 2 * besideText;
    case PM_TabBarTabVSpace:
        return 12;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

QSize LoomStyle::sizeFromContents(ContentsType type, const QStyleOption *option,
                                  const QSize &contents, const QWidget *widget) const
{
    const auto atLeast = [](int width, int height) {
        return QSize(width, std::max(lowestControl, height + 12));
    };
    switch (type) {
    case CT_PushButton:
    case CT_LineEdit:
        return atLeast(contents.width() + 2 * besideText, contents.height());
    case CT_ComboBox:
        return atLeast(contents.width() + besideText + arrowRoom, contents.height());
    case CT_SpinBox:
        // The height is that of its field already.
        return {contents.width() + besideText + stepperRoom,
                std::max(lowestControl, contents.height())};
    default:
        return QProxyStyle::sizeFromContents(type, option, contents, widget);
    }
}

QRect LoomStyle::subElementRect(SubElement element, const QStyleOption *option,
                                const QWidget *widget) const
{
    const auto *const frame = qstyleoption_cast<const QStyleOptionFrame *>(option);
    if (element == SE_LineEditContents && frame && frame->lineWidth > 0)
        return option->rect.adjusted(besideText - 2, 0, 2 - besideText, 0); // the edit adds two
    const QRect rect = QProxyStyle::subElementRect(element, option, widget);
    if (element == SE_TabWidgetTabBar)
        return rect.translated(0, aboveTabs);
    if (element == SE_TabWidgetTabPane || element == SE_TabWidgetTabContents)
        return rect.adjusted(0, aboveTabs, 0, 0);
    return rect;
}

QRect LoomStyle::subControlRect(ComplexControl control, const QStyleOptionComplex *option,
                                SubControl part, const QWidget *widget) const
{
    const QRect all = option->rect;
    const auto visual = [&](const QRect &rect) { return visualRect(option->direction, all, rect); };
    if (control == CC_ComboBox && part == SC_ComboBoxEditField)
        return visual(all.adjusted(besideText - 1, 2, -arrowRoom, -2)); // its label adds one
    if (control == CC_ComboBox && part == SC_ComboBoxArrow)
        return visual(all.adjusted(all.width() - arrowRoom, 0, 0, 0));
    const QRect steppers = all.adjusted(all.width() - stepperRoom, 0, -2, 0);
    if (control == CC_SpinBox && part == SC_SpinBoxEditField)
        return visual(all.adjusted(besideText - 2, 2, -stepperRoom, -2));
    if (control == CC_SpinBox && part == SC_SpinBoxUp)
        return visual(steppers.adjusted(0, 0, 0, -all.height() / 2));
    if (control == CC_SpinBox && part == SC_SpinBoxDown)
        return visual(steppers.adjusted(0, all.height() / 2, 0, 0));
    return QProxyStyle::subControlRect(control, option, part, widget);
}

void LoomStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option,
                              QPainter *painter, const QWidget *widget) const
{
    switch (element) {
    case PE_PanelButtonCommand:
        return drawButton(*painter, *option, widget);
    case PE_PanelButtonTool:
        if (option->state & (State_MouseOver | State_Sunken | State_On))
            draw(*painter, {QRectF(option->rect), radius, groundColor(*option)});
        return;
    case PE_PanelLineEdit: {
        const auto *const frame = qstyleoption_cast<const QStyleOptionFrame *>(option);
        if (frame && frame->lineWidth > 0)
            drawField(*painter, *option);
        return;
    }
    case PE_IndicatorCheckBox:
        return drawCheckBox(*painter, *option);
    case PE_Frame:
        return draw(
            *painter,
            {QRectF(option->rect), radius, Qt::transparent, option->palette.color(QPalette::Mid)});
    case PE_FrameFocusRect:
        return drawRing(*painter, option->rect, option->palette.color(QPalette::Highlight));
    case PE_FrameTabBarBase:
    case PE_FrameTabWidget:
    case PE_FrameDefaultButton:
        return;
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void LoomStyle::drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                            const QWidget *widget) const
{
    switch (element) {
    case CE_PushButton: {
        QStyleOptionButton button = *qstyleoption_cast<const QStyleOptionButton *>(option);
        drawButton(*painter, button, widget);
        if (isSet(button, State_Enabled))
            button.palette.setColor(QPalette::ButtonText, buttonColors(button, widget).text);
        return QProxyStyle::drawControl(CE_PushButtonLabel, &button, painter, widget);
    }
    case CE_TabBarTabShape:
        return drawSegment(*painter, *qstyleoption_cast<const QStyleOptionTab *>(option));
    case CE_TabBarTabLabel: {
        QStyleOptionTab tab = *qstyleoption_cast<const QStyleOptionTab *>(option);
        tab.state &= ~State_HasFocus; // its ring is drawn
        return QProxyStyle::drawControl(element, &tab, painter, widget);
    }
    case CE_ProgressBarGroove:
    case CE_ProgressBarContents: {
        const auto &bar = *qstyleoption_cast<const QStyleOptionProgressBar *>(option);
        const bool isGroove = element == CE_ProgressBarGroove;
        const int range = std::max(1, bar.maximum - bar.minimum);
        return drawProgress(*painter, bar,
                            isGroove ? groundColor(bar) : bar.palette.color(QPalette::Highlight),
                            isGroove ? 1 : double(bar.progress - bar.minimum) / range);
    }
    case CE_MenuItem: {
        const auto *const menu = qobject_cast<const QMenu *>(widget);
        QStyleOptionMenuItem item = *qstyleoption_cast<const QStyleOptionMenuItem *>(option);
        const bool isPlain = !isSet(item, State_Selected);
        if (menu && isPlain && roleOf(menu->actionAt(item.rect.center())) == u"destructive")
            item.palette.setColor(QPalette::Text, toneColor(Tone::error, item.palette));
        return QProxyStyle::drawControl(element, &item, painter, widget);
    }
    default:
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}

void LoomStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex *option,
                                   QPainter *painter, const QWidget *widget) const
{
    const auto part = [&](SubControl which) {
        return subControlRect(control, option, which, widget);
    };
    switch (control) {
    case CC_ComboBox:
        drawField(*painter, *option);
        return drawChevron(*painter, part(SC_ComboBoxArrow), false, *option);
    case CC_SpinBox:
        drawField(*painter, *option);
        drawChevron(*painter, part(SC_SpinBoxUp).translated(0, 2), true, *option);
        return drawChevron(*painter, part(SC_SpinBoxDown).translated(0, -2), false, *option);
    case CC_ScrollBar:
        return drawScrollBar(*painter, *qstyleoption_cast<const QStyleOptionSlider *>(option),
                             part(SC_ScrollBarSlider));
    default:
        QProxyStyle::drawComplexControl(control, option, painter, widget);
    }
}
