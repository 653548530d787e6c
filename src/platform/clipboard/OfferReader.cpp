#include "OfferReader.h"

#include "DataOffer.h"
#include "PipeReader.h"
#include "SelectionText.h"

#include <algorithm>
#include <array>
#include <utility>

namespace
{

constexpr qsizetype maxPipes = 17; // one that is read, the others only read on
constexpr QByteArrayView passwordHint = "x-kde-passwordManagerHint";
constexpr QByteArrayView latin1Type = "STRING";
constexpr std::array<QByteArrayView, 6> textTypes = {"text/plain;charset=utf-8",
                                                     "text/plain;charset=UTF-8",
                                                     "UTF8_STRING",
                                                     "text/plain",
                                                     latin1Type,
                                                     "TEXT"};

QByteArray bestTextType(const DataOffer &offer)
{
    const auto *const best =
        std::find_if(textTypes.begin(), textTypes.end(),
                     [&](QByteArrayView type) { return offer.types().contains(type); });
    return best == textTypes.end() ? QByteArray() : best->toByteArray();
}

QString textOf(const QByteArray &data, const QByteArray &type)
{
    return selectionText(data, type == latin1Type ? TextCoding::latin1 : TextCoding::utf8);
}

} // namespace

OfferReader::OfferReader(const ClipboardLimits &limits)
    : m_limits(limits)
{
}

OfferReader::~OfferReader() = default;

void OfferReader::read(std::unique_ptr<DataOffer> offer)
{
    abandon();
    m_offer = std::move(offer);
    m_deadline.setRemainingTime(m_limits.total);
    const QByteArray type = bestTextType(*m_offer);
    if (type.isEmpty())
        finish({});
    else
        ask(m_offer->types().contains(passwordHint) ? passwordHint.toByteArray() : type);
}

void OfferReader::readArrived()
{
    while (m_pipe && m_pipe->readArrived()) {}
}

void OfferReader::abandon()
{
    m_offer.reset();
    if (m_pipe)
        std::exchange(m_pipe, nullptr)->discard();
}

void OfferReader::ask(const QByteArray &type)
{
    m_asked = type;
    const auto pipe = m_offer->receive(type);
    if (!pipe)
        return finish({});
    if (children().size() == maxPipes)
        delete children().constFirst();
    m_pipe = new PipeReader(*pipe, m_deadline, m_limits, this);
    connect(m_pipe, &PipeReader::ended, this, &OfferReader::accept);
}

/// A program that ends before it has written anything leaves an empty pipe.
void OfferReader::accept(const std::optional<QByteArray> &data)
{
    m_pipe = nullptr;
    if (!data)
        finish({});
    else if (m_asked != passwordHint)
        finish({data->isEmpty() ? std::nullopt : std::optional(textOf(*data, m_asked))});
    else if (*data == "secret")
        finish({{}, true});
    else
        ask(bestTextType(*m_offer));
}

void OfferReader::finish(const ClipboardContents &contents)
{
    m_offer.reset();
    Q_EMIT finished(contents);
}
