// SPDX-License-Identifier: MIT
#pragma once

#include "ClipboardLimits.h"
#include "ClipboardWorker.h"
#include "CopyLedger.h"

#include <QStringList>
#include <QTimer>

#include <memory>

class WaylandConnection;
class WaylandSelection;

/// The clipboard of a Wayland compositor that offers data control, connected anew whenever the
/// connection is lost.
class WaylandClipboard final : public ClipboardWorker
{
    Q_OBJECT
public:
    /// An empty `display` stands for the environment's.
    explicit WaylandClipboard(const QByteArray &display = {}, const ClipboardLimits &limits = {});
    ~WaylandClipboard() override;

    void start() override;
    void startReading() override;
    void stopReading() override;
    void fetch() override;
    void setText(const QString &text) override;

private:
    void greeted();
    void claimTexts();
    void loseConnection(const QString &reason);
    void tryAgainLater();

    QByteArray m_display;
    ClipboardLimits m_limits;
    CopyLedger m_ledger;
    QTimer m_retry;
    QTimer m_silence; // since the connection was made
    std::chrono::milliseconds m_pause;
    bool m_isReading = false;
    QStringList m_unclaimed; // texts of ours that wait for a connection
    std::unique_ptr<WaylandConnection> m_connection;
    std::unique_ptr<WaylandSelection> m_selection;
};
