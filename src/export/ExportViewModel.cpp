// SPDX-License-Identifier: MIT
#include "ExportViewModel.h"

#include "Calendar.h"

#include <QDateTime>

using namespace Qt::StringLiterals;

ExportViewModel::ExportViewModel(ExportService &service)
    : ExportScreenModel(service, {LinkOrder::store, ExportLayout::window, u"links"_s, false})
    , m_created(now())
    , m_custom{m_created, m_created}
{
}

void ExportViewModel::setSelectedRange(DateRangeOption range)
{
    set(m_selectedRange, range);
}

void ExportViewModel::setSelectedFormat(ExportFormat format)
{
    set(m_selectedFormat, format);
}

void ExportViewModel::setCustomStartDay(const QDate &day)
{
    set(m_custom.first, onDay(day));
}

void ExportViewModel::setCustomEndDay(const QDate &day)
{
    set(m_custom.last, onDay(day));
}

QString ExportViewModel::countText() const
{
    return tr("%1 links to export").arg(linkCount());
}

DateSpan ExportViewModel::dates() const
{
    return spanOf(m_selectedRange, now(), m_custom);
}

ContentType ExportViewModel::contentType() const
{
    return m_selectedFormat == ExportFormat::pdf ? ContentType::pdf : ContentType::plainText;
}

/// `day` at the time of day at which the screen was made.
Instant ExportViewModel::onDay(const QDate &day) const
{
    const auto days = dateTimeOf(m_created).date().daysTo(day);
    return addDays(m_created, int(days)).value_or(m_created);
}
