#pragma once

#include "ClipboardLimits.h"
#include "CopyLedger.h"

#include <QDeadlineTimer>

#include <memory>

class DataOffer;
class PipeReader;

/// Asks the owner of the Wayland clipboard for its text: the password hint, if there is one, then
/// the best text type.
class OfferReader : public QObject
{
    Q_OBJECT
public:
    explicit OfferReader(const ClipboardLimits &limits);
    ~OfferReader() override;

    /// Starts to read `offer`; gives up what was being read before.
    void read(std::unique_ptr<DataOffer> offer);
    /// Finishes now if the whole text is already there.
    void readArrived();
    void abandon();

Q_SIGNALS:
    /// Sent once for each `read` that is not given up, in time and within the limits.
    void finished(const ClipboardContents &contents);

private:
    void ask(const QByteArray &type);
    void accept(const std::optional<QByteArray> &data);
    void finish(const ClipboardContents &contents);

    ClipboardLimits m_limits;
    std::unique_ptr<DataOffer> m_offer; // while it is read
    QByteArray m_asked;
    QDeadlineTimer m_deadline;
    PipeReader *m_pipe = nullptr; // others of our children are only read on
};
