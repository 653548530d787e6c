// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QString>

#include <optional>

/// The desktop's clipboard, as plain text. Nothing here waits for the programs that copy. Main
/// thread only.
class ClipboardSource : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    /// Grows by one with every copy, whoever made it, from the moment the source was made; never
    /// falls. It includes a copy only once its text is known.
    virtual qint64 changeCount() const = 0;
    /// The text that belongs to `changeCount()`; absent when the clipboard is empty, holds
    /// something else, or texts were not yet asked for.
    virtual std::optional<QString> text() const = 0;
    /// Replaces the contents. Counts as a copy.
    virtual void setText(const QString &text) = 0;
    /// From here on the texts of new copies are read; before, copies are only counted. Waits, for
    /// less than 50 ms, until what is copied afterwards cannot be missed.
    virtual void startReading() = 0;
    /// From here on copies are only counted again.
    virtual void stopReading() = 0;
    /// Asks for the text in the clipboard now, also for one that was copied before texts were read
    /// or while they were not. `fetched()` tells it.
    virtual void fetch() = 0;
    /// What the user must know about copies that are not seen on this desktop; empty when all are.
    virtual QString limitation() const = 0;
    /// By what means copies are seen, and why by these, as a sentence; empty while they are not.
    virtual QString means() const = 0;

Q_SIGNALS:
    /// The answer to `fetch()`, some seconds later at most: absent when the clipboard is empty,
    /// holds something else or a secret, or its owner does not give it in time.
    void fetched(const std::optional<QString> &text);
    /// `changeCount()` has grown. Sent once for each change that became known, with the count and
    /// the text of just that change in place.
    void changed();
    /// It, or the means, became known or changed.
    void limitationChanged();
};
