// SPDX-License-Identifier: MIT
#include "FormParts.h"

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

QPushButton *destructiveButton(const QString &text)
{
    auto *const button = new QPushButton(text);
    QPalette palette;
    palette.setColor(QPalette::ButtonText, toneColor(Tone::error, button->palette()));
    button->setPalette(palette);
    return button;
}
