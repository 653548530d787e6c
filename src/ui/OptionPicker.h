// SPDX-License-Identifier: MIT
#pragma once

#include <QComboBox>

/// A picker of the values of an enumeration, in the order of `options`, each by its `label`. The
/// first to be chosen is `chosen`; `choose` is called when another is chosen.
template <typename Options, typename Option, typename Choose>
QComboBox *optionPicker(const Options &options, Option chosen, Choose choose)
{
    auto *const picker = new QComboBox;
    for (const Option option : options)
        picker->addItem(label(option), int(option));
    picker->setCurrentIndex(picker->findData(int(chosen)));
    QObject::connect(picker, &QComboBox::currentIndexChanged, picker, [picker, choose](int index) {
        choose(static_cast<Option>(picker->itemData(index).toInt()));
    });
    return picker;
}
