// SPDX-License-Identifier: MIT
#pragma once

#include "ExportScreenModel.h"

/// The compact screen within the panel: exports newest first.
class InlineExportViewModel final : public ExportScreenModel
{
    Q_OBJECT
public:
    using DateRangeOption = InlineDateRangeOption;

    explicit InlineExportViewModel(ExportService &service);

    DateRangeOption dateRange() const { return m_dateRange; }
    void setDateRange(DateRangeOption range);
    InlineExportFormat exportFormat() const { return m_exportFormat; }
    void setExportFormat(InlineExportFormat format);

protected:
    DateSpan dates() const override;
    ExportFormat format() const override;
    ContentType contentType() const override;

private:
    DateRangeOption m_dateRange = DateRangeOption::last7Days;
    InlineExportFormat m_exportFormat = InlineExportFormat::markdown;
};
