// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// The text of an INI file as QSettings reads it, with `value` under `key` in its general group.
/// All other lines stay as they are, whatever they are. `key` needs no escaping.
QByteArray withIniValue(const QByteArray &text, QByteArrayView key, const QString &value);
