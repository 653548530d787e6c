// SPDX-License-Identifier: MIT
#pragma once

#include "ElidedLabel.h"

#include <QAbstractButton>
#include <QLabel>

#include <algorithm>

/// The control with that text or name; null when there is none.
template <typename Control>
Control *labelled(const QWidget &screen, const QString &label)
{
    for (Control *const control : screen.findChildren<Control *>()) {
        const auto *const button = qobject_cast<QAbstractButton *>(control);
        if ((button && button->text() == label) || control->accessibleName() == label)
            return control;
    }
    return nullptr;
}

/// Whether there is such a label to be seen, once the screen is.
inline bool shows(const QWidget &screen, const QString &text)
{
    const auto isShown = [&](const auto *label) {
        return label->isVisibleTo(&screen) && label->text() == text;
    };
    const auto labels = screen.findChildren<QLabel *>();
    const auto elided = screen.findChildren<ElidedLabel *>();
    return std::any_of(labels.begin(), labels.end(), isShown)
        || std::any_of(elided.begin(), elided.end(), isShown);
}
