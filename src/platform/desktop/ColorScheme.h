// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusVariant>
#include <QObject>

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

    bool m_isOurs = false; ///< the palette in use is one that this object set
};
