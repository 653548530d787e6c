// SPDX-License-Identifier: MIT
#pragma once

#include "ClipboardLimits.h"
#include "ClipboardWorker.h"
#include "CopyLedger.h"

#include <QStringList>
#include <QTimer>

#include <memory>

class X11Selection;

/// The clipboard of an X server, connected anew whenever the connection is lost.
class X11Clipboard final : public ClipboardWorker
{
    Q_OBJECT
public:
    /// An empty `display` stands for the environment's.
    explicit X11Clipboard(const QByteArray &display = {}, const ClipboardLimits &limits = {});
    ~X11Clipboard() override;

    void start() override;
    void startReading() override;
    void stopReading() override;
    void fetch() override;
    void setText(const QString &text) override;

private:
    void loseConnection();
    void tryAgainLater();

    QByteArray m_display;
    ClipboardLimits m_limits;
    CopyLedger m_ledger;
    QTimer m_retry;
    std::chrono::milliseconds m_pause;
    bool m_isReading = false;
    QStringList m_unclaimed; // texts of ours that wait for a connection
    std::unique_ptr<X11Selection> m_selection;
};
