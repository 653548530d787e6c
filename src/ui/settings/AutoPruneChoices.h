// SPDX-License-Identifier: MIT
#pragma once

class Preferences;
class QComboBox;

/// After how many days links are deleted, as both settings screens offer it. While the user has not
/// chosen, 90 days are shown and nothing is deleted.
QComboBox *autoPrunePicker(Preferences &preferences);
