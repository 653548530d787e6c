// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

class QDBusPendingCallWatcher;
class QDBusServiceWatcher;

/// Whether there is a tray of the newer kind, which programs reach over D-Bus: a watcher service
/// with at least one host that shows icons. Main thread only.
class StatusNotifierHost : public QObject
{
    Q_OBJECT
public:
    explicit StatusNotifierHost(QObject *parent = nullptr);

    /// False until the first answer has come, soon after the construction.
    bool isKnown() const { return m_isKnown; }
    bool isPresent() const { return m_isPresent; }

Q_SIGNALS:
    /// It became known, came or went.
    void changed();

private Q_SLOTS:
    void ask();

private:
    void watcherChanged(const QString &service, const QString &before, const QString &now);
    void set(bool isPresent);

    QDBusPendingCallWatcher *m_question = nullptr; ///< the last one, while it is not answered
    bool m_isKnown = false;
    bool m_isPresent = false;
};

/// Whether there is such a tray now. Waits for its answer. Any thread.
bool hasStatusNotifierHost();
