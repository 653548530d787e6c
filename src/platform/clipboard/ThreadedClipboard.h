// SPDX-License-Identifier: MIT
#pragma once

#include "ClipboardSource.h"
#include "ClipboardWorker.h"

#include <QTimer>

#include <memory>

class QThread;

/// The main thread's view of a clipboard that a worker watches on a thread of its own. All that is
/// read here is what the worker told last, so neither another program nor a display server that
/// hangs can hold the main thread.
class ThreadedClipboard final : public ClipboardSource
{
    Q_OBJECT
public:
    explicit ThreadedClipboard(std::unique_ptr<ClipboardWorker> worker, QObject *parent = nullptr);
    /// Waits up to a second for the worker to leave our text to a clipboard manager.
    ~ThreadedClipboard() override;

    qint64 changeCount() const override { return m_snapshot.count; }
    std::optional<QString> text() const override { return m_snapshot.text; }
    void setText(const QString &text) override;
    void startReading() override;
    void stopReading() override;
    void fetch() override;
    QString limitation() const override;
    QString means() const override;

private:
    void show(const ClipboardSnapshot &snapshot);
    void setReach(ClipboardReach reach);

    QThread *m_thread;
    ClipboardWorker *m_worker;
    ClipboardSnapshot m_snapshot;
    std::optional<ClipboardReach> m_reach; ///< absent until the worker has told
    QTimer m_silence; // no word from the worker yet
};
