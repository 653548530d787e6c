// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>

#include <functional>

class Preferences;
class QCheckBox;
class QComboBox;
class QLineEdit;

/// Controls bound to one preference each: they show its value, or `shownDefault` while it has none,
/// follow it when it changes elsewhere, and write it only when the control is changed, by whatever
/// means. Then `afterwards` is called with the new value. `preferences` outlives the control.

struct PickerEntry {
    QString label;
    int value = 0;
};

QCheckBox *preferenceToggle(Preferences &preferences, QLatin1StringView key, bool shownDefault,
                            const QString &label, std::function<void(bool)> afterwards = {});
/// A value that is none of `entries` is shown as it is, with none of them chosen.
QComboBox *preferencePicker(Preferences &preferences, QLatin1StringView key, int shownDefault,
                            const QList<PickerEntry> &entries,
                            std::function<void(int)> afterwards = {});
QLineEdit *preferenceField(Preferences &preferences, QLatin1StringView key,
                           const QString &placeholder,
                           std::function<void(QString)> afterwards = {});
