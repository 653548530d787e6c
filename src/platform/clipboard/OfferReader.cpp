// SPDX-License-Identifier: MIT
#include "OfferReader.h"

#include "DataOffer.h"
#include "PipeReader.h"
#include "SelectionText.h"

#include <algorithm>
#include <array>
#include <utility>

namespace
{

constexpr qsizetype maxPipes = 32; // beyond, those that are only read on are closed
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

void dropOldPipe(const QObject &pipes)
{
    const auto all = pipes.findChildren<PipeReader *>(Qt::FindDirectChildrenOnly);
    const auto oldest = std::find_if(all.cbegin(), all.cend(),
                                     [](const auto *pipe) { return pipe->isDiscarding(); });
    if (all.size() >= maxPipes && oldest != all.cend())
        delete *oldest;
}

} // namespace

OfferReader::OfferReader(std::shared_ptr<const DataOffer> offer, const ClipboardLimits &limits,
                         QObject *pipes)
    : m_offer(std::move(offer))
    , m_limits(limits)
    , m_pipes(pipes)
    , m_deadline(limits.total)
{
    const QByteArray type = bestTextType(*m_offer);
    if (type.isEmpty())
        finish({});
    else
        ask(m_offer->types().contains(passwordHint) ? passwordHint.toByteArray() : type);
}

OfferReader::~OfferReader()
{
    if (m_pipe)
        m_pipe->discard();
}

void OfferReader::hurry()
{
    m_isHurried = true;
    if (m_pipe)
        m_pipe->hurry(m_limits.overtaken);
}

void OfferReader::ask(const QByteArray &type)
{
    m_asked = type;
    const auto pipe = m_offer->receive(type);
    if (!pipe)
        return finish({});
    dropOldPipe(*m_pipes);
    m_pipe = new PipeReader(*pipe, m_deadline, m_limits, m_pipes);
    connect(m_pipe, &PipeReader::ended, this, &OfferReader::accept);
    if (m_isHurried)
        m_pipe->hurry(m_limits.overtaken);
}

/// A program that ends before it has written anything leaves an empty pipe.
void OfferReader::accept(const std::optional<QByteArray> &data)
{
    m_pipe.clear();
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
    m_contents = contents;
    Q_EMIT finished();
}
