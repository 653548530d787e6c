// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QString>

#include <optional>

struct ClipboardSnapshot {
    qint64 count = 0;
    std::optional<QString> text;
};

/// By what means copies can be seen, and so whose.
enum class ClipboardReach {
    dataControl, ///< everybody's, through the Wayland compositor
    x11, ///< everybody's, through the X server of an X11 session
    sharedX11, ///< everybody's, through the X server of a compositor that shares them with it
    x11Programs, ///< those of X11 programs, through the X server of another compositor
    none,
};

/// One way of reaching the desktop's clipboard. Lives on a thread of its own, where it may wait for
/// the display server; all calls are made there.
class ClipboardWorker : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    /// Begins to count copies, and keeps trying while no display server answers.
    virtual void start() = 0;
    /// Soon the texts of new copies are read: once `readingStarted` is sent.
    virtual void startReading() = 0;
    /// From here on they are only counted again.
    virtual void stopReading() = 0;
    /// Reads the text that is there now, whenever it was copied, and sends `fetched`.
    virtual void fetch() = 0;
    /// Replaces the contents, as soon as there is a connection.
    virtual void setText(const QString &text) = 0;

Q_SIGNALS:
    void copied(const ClipboardSnapshot &snapshot);
    void readingStarted();
    void fetched(const std::optional<QString> &text);
    void reachKnown(ClipboardReach reach);
};
