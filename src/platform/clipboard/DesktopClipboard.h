// SPDX-License-Identifier: MIT
#pragma once

#include "ClipboardLimits.h"
#include "ClipboardWorker.h"

#include <QStringList>
#include <QTimer>

#include <memory>

/// The clipboard of the desktop that the environment names: Wayland's where the compositor offers
/// data control, else that of the X server. The first that answers is kept for good.
class DesktopClipboard final : public ClipboardWorker
{
    Q_OBJECT
public:
    explicit DesktopClipboard(const ClipboardLimits &limits = {});

    void start() override;
    void startReading() override;
    void stopReading() override;
    void fetch() override;
    void setText(const QString &text) override;

private:
    enum class System { wayland, x11 };

    void tryOut(System system);
    void reached(System system, ClipboardReach reach);
    void choose();
    void dropWorker();

    ClipboardLimits m_limits;
    QTimer m_retry;
    std::chrono::milliseconds m_pause;
    std::unique_ptr<ClipboardWorker> m_worker;
    bool m_isChosen = false;
    bool m_isReading = false;
    QStringList m_unclaimed; // texts of ours that wait for the choice
};
