// SPDX-License-Identifier: MIT
#include "InlineExportViewModel.h"

using namespace Qt::StringLiterals;

InlineExportViewModel::InlineExportViewModel(ExportService &service)
    : ExportScreenModel(service,
                        {LinkOrder::newestFirst, ExportLayout::compact, u"links-export"_s, true})
{
}

void InlineExportViewModel::setDateRange(DateRangeOption range)
{
    set(m_dateRange, range);
}

void InlineExportViewModel::setExportFormat(InlineExportFormat format)
{
    set(m_exportFormat, format);
}

DateSpan InlineExportViewModel::dates() const
{
    return spanOf(m_dateRange, now());
}

ExportFormat InlineExportViewModel::format() const
{
    return ::exportFormat(m_exportFormat);
}

ContentType InlineExportViewModel::contentType() const
{
    switch (m_exportFormat) {
    case InlineExportFormat::text:
        return ContentType::plainText;
    case InlineExportFormat::markdown:
        return ContentType::text;
    case InlineExportFormat::pdf:
        return ContentType::pdf;
    }
    Q_UNREACHABLE();
}
