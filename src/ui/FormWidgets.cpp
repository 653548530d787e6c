// SPDX-License-Identifier: MIT
#include "FormWidgets.h"

#include "Tone.h"

#include <QEvent>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>

QFont scaledFont(const QFont &font, qreal factor, QFont::Weight weight)
{
    QFont scaled = font;
    scaled.setPointSizeF(font.pointSizeF() * factor);
    scaled.setWeight(weight);
    return scaled;
}

QLabel *heading(const QString &text)
{
    auto *const label = new QLabel(text);
    label->setFont(scaledFont(label->font(), 1.0, QFont::DemiBold));
    return label;
}

QWidget *divider()
{
    auto *const line = new QWidget;
    line->setBackgroundRole(QPalette::Mid);
    line->setAutoFillBackground(true);
    line->setFixedHeight(1);
    return line;
}

namespace
{

/// Keeps the wheel from a control that does not have the focus: whoever scrolls past it wants to
/// change nothing.
class WheelGuard : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::Wheel || static_cast<QWidget *>(watched)->hasFocus())
            return false;
        event->ignore(); // so that it scrolls what is around
        return true;
    }
};

/// A button whose text has a colour of its own, on every palette.
class ColoredButton : public QPushButton
{
public:
    using Choose = QColor (*)(const QPalette &);

    ColoredButton(const QString &text, Choose choose)
        : QPushButton(text)
        , m_choose(choose)
    {
        colorText();
    }

protected:
    void changeEvent(QEvent *event) override
    {
        QPushButton::changeEvent(event);
        if (event->type() == QEvent::PaletteChange)
            colorText();
    }

private:
    void colorText()
    {
        const QColor color = m_choose(palette());
        if (palette().color(QPalette::ButtonText) == color)
            return;
        QPalette own;
        own.setColor(QPalette::ButtonText, color);
        setPalette(own);
    }

    Choose m_choose;
};

} // namespace

QFormLayout *makeForm()
{
    auto *const form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    form->setLabelAlignment(Qt::AlignLeft);
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    return form;
}

void addRow(QFormLayout *form, const QString &label, QWidget *control)
{
    control->setAccessibleName(label);
    control->setFocusPolicy(Qt::StrongFocus); // not by the wheel
    control->installEventFilter(new WheelGuard(control));
    control->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    form->addRow(label, control);
}

QPushButton *primaryButton(const QString &text)
{
    auto *const button = new QPushButton(text);
    button->setProperty("role", QStringLiteral("primary"));
    return button;
}

QPushButton *destructiveButton(const QString &text)
{
    auto *const button = new ColoredButton(
        text, [](const QPalette &palette) { return toneColor(Tone::error, palette); });
    button->setProperty("role", QStringLiteral("destructive"));
    return button;
}

QPushButton *linkButton(const QString &text)
{
    auto *const link = new ColoredButton(
        text, [](const QPalette &palette) { return palette.color(QPalette::Link); });
    link->setFlat(true);
    link->setAutoDefault(false);
    link->setCursor(Qt::PointingHandCursor);
    QFont underlined = link->font();
    underlined.setUnderline(true);
    link->setFont(underlined);
    return link;
}
