// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

/// One Unix signal as a signal of the main loop. One object for a signal number. Main thread only.
class UnixSignal : public QObject
{
    Q_OBJECT
public:
    /// From now on `number` does no more than to be announced. Programs started from here get its
    /// default effect back.
    explicit UnixSignal(int number, QObject *parent = nullptr);
    ~UnixSignal() override;

Q_SIGNALS:
    void arrived();

private:
    int m_number;
    int m_descriptor;
};
