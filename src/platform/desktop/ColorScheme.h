// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusVariant>
#include <QObject>
#include <QPalette>

#include <optional>

/// The colours of the program where its desktop is dark and its toolkit does not know.
QPalette darkPalette();

/// Keeps the program's palette in step with the desktop's choice of dark or light, as the settings
/// portal tells it, live. Where the toolkit's own theme already follows the desktop nothing is
/// changed. Main thread only.
class ColorScheme : public QObject
{
    Q_OBJECT
public:
    explicit ColorScheme(QObject *parent = nullptr);

    /// Asks the portal, now and whenever it comes up, and listens to it.
    void follow();

private Q_SLOTS:
    void settingChanged(const QString &group, const QString &key, const QDBusVariant &value);

private:
    void ask();
    void apply(bool dark);

    std::optional<QPalette> m_light; ///< was in use before this object set its own
};
