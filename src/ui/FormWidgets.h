// SPDX-License-Identifier: MIT
#pragma once

#include <QFont>

class QFormLayout;
class QLabel;
class QPushButton;
class QWidget;

/// What the screens with forms have in common.

QFont scaledFont(const QFont &font, qreal factor, QFont::Weight weight);
QLabel *heading(const QString &text);
/// A line between two groups. Filled, because a line drawn one pixel wide is lost at some scale
/// factors.
QWidget *divider();
/// Labels in one column, controls as wide as there is room in the other.
QFormLayout *makeForm();
/// `label` also becomes the control's accessible name. The wheel changes the control only while it
/// has the focus.
void addRow(QFormLayout *form, const QString &label, QWidget *control);
/// For what a screen is there for.
QPushButton *primaryButton(const QString &text);
/// For what cannot be undone.
QPushButton *destructiveButton(const QString &text);
/// For what opens a page in the browser.
QPushButton *linkButton(const QString &text);
