// SPDX-License-Identifier: MIT
#pragma once

#include "ClipboardLimits.h"
#include "CopyLedger.h"

#include <QDeadlineTimer>
#include <QPointer>

#include <memory>

class DataOffer;
class PipeReader;

/// Asks a program for the text that it has put into the Wayland clipboard: the password hint, if
/// there is one, then the best text type.
class OfferReader : public QObject
{
    Q_OBJECT
public:
    /// Starts to read. `pipes` owns what is still read on when the reader has gone.
    OfferReader(std::shared_ptr<const DataOffer> offer, const ClipboardLimits &limits,
                QObject *pipes);
    ~OfferReader() override;

    /// Absent until all is read, or it turned out that there is no text in time and in the limits.
    const std::optional<ClipboardContents> &contents() const { return m_contents; }
    /// Something newer was copied.
    void hurry();

Q_SIGNALS:
    /// Sent once; maybe by the constructor already.
    void finished();

private:
    void ask(const QByteArray &type);
    void accept(const std::optional<QByteArray> &data);
    void finish(const ClipboardContents &contents);

    std::shared_ptr<const DataOffer> m_offer;
    ClipboardLimits m_limits;
    QObject *m_pipes;
    QPointer<PipeReader> m_pipe;
    QByteArray m_asked;
    QDeadlineTimer m_deadline;
    bool m_isHurried = false;
    std::optional<ClipboardContents> m_contents;
};
