// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QObject>

#include <memory>
#include <optional>
#include <xcb/xcb.h>

class QSocketNotifier;
class X11Connection;

/// Whether the X11 screen has a tray of the older kind, which embeds the windows of programs. Main
/// thread only.
class EmbeddingTray : public QObject
{
    Q_OBJECT
public:
    /// Watches the screen that the environment names; without one there is no such tray.
    explicit EmbeddingTray(QObject *parent = nullptr);
    ~EmbeddingTray() override;

    bool isPresent() const { return m_owner != XCB_NONE; }
    /// The colour that the tray wants icons to have; absent when it does not say.
    std::optional<QColor> foreground() const;

Q_SIGNALS:
    /// One came, went, or took the place of another.
    void changed();

private:
    void processEvents();

    std::unique_ptr<X11Connection> m_connection; ///< null where there is no X server
    std::unique_ptr<QSocketNotifier> m_readable;
    xcb_window_t m_owner = XCB_NONE;
};

/// Whether the screen has such a tray now. Waits for the X server. Any thread.
bool hasEmbeddingTray();
