// SPDX-License-Identifier: MIT
#include "settings/AutoPruneChoices.h"

#include "Preferences.h"
#include "settings/PreferenceControls.h"

#include <QCoreApplication>

QComboBox *autoPrunePicker(Preferences &preferences)
{
    const auto text = [](const char *source) {
        return QCoreApplication::translate("AutoPruneChoices", source);
    };
    const QList<PickerEntry> entries = {
        {text(QT_TRANSLATE_NOOP("AutoPruneChoices", "30 days")), 30},
        {text(QT_TRANSLATE_NOOP("AutoPruneChoices", "90 days")), 90},
        {text(QT_TRANSLATE_NOOP("AutoPruneChoices", "180 days")), 180},
        {text(QT_TRANSLATE_NOOP("AutoPruneChoices", "1 year")), 365},
        {text(QT_TRANSLATE_NOOP("AutoPruneChoices", "Never")), 0},
    };
    return preferencePicker(preferences, preferenceKeys::autoPruneDays, 90, entries);
}
