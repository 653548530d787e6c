// SPDX-License-Identifier: MIT
#include "settings/PreferenceControls.h"

#include "Preferences.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>

namespace
{

/// Shows the value now and whenever it is another.
template <typename Show>
void follow(Preferences &preferences, QLatin1StringView key, QWidget *control, Show show)
{
    show();
    QObject::connect(&preferences, &Preferences::changed, control,
                     [key, show](QLatin1StringView changed) {
                         if (changed == key)
                             show();
                     });
}

/// What the user's act does: writes, then tells.
template <typename Value>
auto writer(Preferences &preferences, QLatin1StringView key, std::function<void(Value)> afterwards)
{
    return [&preferences, key, afterwards = std::move(afterwards)](const Value &value) {
        preferences.set(key, value);
        if (afterwards)
            afterwards(value);
    };
}

} // namespace

QCheckBox *preferenceToggle(Preferences &preferences, QLatin1StringView key, bool shownDefault,
                            const QString &label, std::function<void(bool)> afterwards)
{
    auto *const toggle = new QCheckBox(label);
    follow(preferences, key, toggle, [&preferences, key, shownDefault, toggle] {
        toggle->setChecked(preferences.boolean(key).value_or(shownDefault));
    });
    QObject::connect(toggle, &QCheckBox::clicked, toggle,
                     writer<bool>(preferences, key, std::move(afterwards)));
    return toggle;
}

QComboBox *preferencePicker(Preferences &preferences, QLatin1StringView key, int shownDefault,
                            const QList<PickerEntry> &entries, std::function<void(int)> afterwards)
{
    auto *const picker = new QComboBox;
    for (const PickerEntry &entry : entries)
        picker->addItem(entry.label, entry.value);
    follow(preferences, key, picker, [&preferences, key, shownDefault, picker] {
        const int value = preferences.integer(key).value_or(shownDefault);
        picker->setPlaceholderText(QString::number(value));
        picker->setCurrentIndex(picker->findData(value));
    });
    const auto write = writer<int>(preferences, key, std::move(afterwards));
    QObject::connect(picker, &QComboBox::activated, picker,
                     [picker, write](int index) { write(picker->itemData(index).toInt()); });
    return picker;
}

QLineEdit *preferenceField(Preferences &preferences, QLatin1StringView key,
                           const QString &placeholder, std::function<void(QString)> afterwards)
{
    auto *const field = new QLineEdit;
    field->setPlaceholderText(placeholder);
    follow(preferences, key, field, [&preferences, key, field] {
        const QString value = preferences.string(key).value_or(QString());
        if (field->text() != value) // setting it would move the cursor
            field->setText(value);
    });
    QObject::connect(field, &QLineEdit::textEdited, field,
                     writer<QString>(preferences, key, std::move(afterwards)));
    return field;
}
