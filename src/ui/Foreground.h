// SPDX-License-Identifier: MIT
#pragma once

class QDialog;
class QWidget;

/// Whether the user has the window before him: it is neither minimised nor on another workspace.
bool isInView(const QWidget &window);

/// Shows a window in front of the others, on the workspace in view, with the window it belongs to
/// if that is open.
void bringToFront(QWidget &window);

/// The dialog that waits for its answer; null when there is none. Assistive technology presses
/// buttons behind it, too, which must not open a second one.
QDialog *openDialog();

/// What the user asks for while a dialog is open would be behind it, so the dialog comes to the
/// front instead, with what was typed into it. False when none is open.
bool bringDialogToFront();
