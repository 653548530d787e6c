// SPDX-License-Identifier: MIT
#pragma once

#include "ExportScreenModel.h"

#include <QDate>

/// The window "Export Links": exports in store order.
class ExportViewModel final : public ExportScreenModel
{
    Q_OBJECT
public:
    explicit ExportViewModel(ExportService &service);

    DateRangeOption selectedRange() const { return m_selectedRange; }
    void setSelectedRange(DateRangeOption range);
    ExportFormat selectedFormat() const { return m_selectedFormat; }
    void setSelectedFormat(ExportFormat format);

    /// The bounds of `custom`, both included. They always have the time of day at which the screen
    /// was made; only their days are chosen.
    Instant customStartDate() const { return m_custom.first; }
    Instant customEndDate() const { return m_custom.last; }
    void setCustomStartDay(const QDate &day);
    void setCustomEndDay(const QDate &day);

    QString countText() const; ///< "3 links to export"

protected:
    DateSpan dates() const override;
    ExportFormat format() const override { return m_selectedFormat; }
    ContentType contentType() const override;

private:
    Instant onDay(const QDate &day) const;

    Instant m_created;
    DateSpan m_custom;
    DateRangeOption m_selectedRange = DateRangeOption::today;
    ExportFormat m_selectedFormat = ExportFormat::markdown;
};
