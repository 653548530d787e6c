// SPDX-License-Identifier: MIT
#include "FormParts.h"

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
    control->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    form->addRow(label, control);
}

QPushButton *destructiveButton(const QString &text)
{
    auto *const button = new QPushButton(text);
    QPalette palette;
    palette.setColor(QPalette::ButtonText, QColor(0xd6, 0x45, 0x45)); // readable on dark and light
    button->setPalette(palette);
    return button;
}
