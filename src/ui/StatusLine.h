// SPDX-License-Identifier: MIT
#pragma once

#include "Tone.h"

#include <QWidget>

#include <optional>

class Caption;
class IconLabel;

/// What has come of something the user did: an error or a success, in words and with its sign. Not
/// there while there is nothing to tell.
class StatusLine : public QWidget
{
    Q_OBJECT
public:
    explicit StatusLine(QWidget *parent = nullptr);

    /// Nothing to tell when `text` is absent or empty.
    void tell(Tone tone, const std::optional<QString> &text);

private:
    IconLabel *m_icon;
    Caption *m_text;
};
