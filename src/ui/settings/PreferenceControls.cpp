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

/// Writes what a control has come to hold, then tells, unless it is what `stored` gives: the
/// control then only follows.
template <typename Value, typename Stored>
auto writer(Preferences &preferences, QLatin1StringView key, Stored stored,
            std::function<void(Value)> afterwards)
{
    return [&preferences, key, stored, afterwards = std::move(afterwards)](const Value &value) {
        if (value == stored())
            return;
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
    const auto stored = [&preferences, key, shownDefault] {
        return preferences.boolean(key).value_or(shownDefault);
    };
    follow(preferences, key, toggle, [toggle, stored] { toggle->setChecked(stored()); });
    QObject::connect(toggle, &QCheckBox::toggled, toggle,
                     writer<bool>(preferences, key, stored, std::move(afterwards)));
    return toggle;
}

QComboBox *preferencePicker(Preferences &preferences, QLatin1StringView key, int shownDefault,
                            const QList<PickerEntry> &entries, std::function<void(int)> afterwards)
{
    auto *const picker = new QComboBox;
    for (const PickerEntry &entry : entries)
        picker->addItem(entry.label, entry.value);
    const auto stored = [&preferences, key, shownDefault] {
        return preferences.integer(key).value_or(shownDefault);
    };
    follow(preferences, key, picker, [picker, stored] {
        picker->setPlaceholderText(QString::number(stored()));
        picker->setCurrentIndex(picker->findData(stored()));
    });
    const auto write = writer<int>(preferences, key, stored, std::move(afterwards));
    QObject::connect(picker, &QComboBox::currentIndexChanged, picker, [picker, write](int index) {
        if (index >= 0)
            write(picker->itemData(index).toInt());
    });
    return picker;
}

QLineEdit *preferenceField(Preferences &preferences, QLatin1StringView key,
                           const QString &placeholder, std::function<void(QString)> afterwards)
{
    auto *const field = new QLineEdit;
    field->setPlaceholderText(placeholder);
    const auto stored = [&preferences, key] { return preferences.string(key).value_or(QString()); };
    follow(preferences, key, field, [field, stored] {
        if (field->text() != stored()) // setting it would move the cursor
            field->setText(stored());
    });
    QObject::connect(field, &QLineEdit::textChanged, field,
                     writer<QString>(preferences, key, stored, std::move(afterwards)));
    return field;
}
