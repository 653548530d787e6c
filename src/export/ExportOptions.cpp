// SPDX-License-Identifier: MIT
#include "ExportOptions.h"

using namespace Qt::StringLiterals;

QString label(DateRangeOption range)
{
    switch (range) {
    case DateRangeOption::today:
        return u"Today"_s;
    case DateRangeOption::yesterday:
        return u"Yesterday"_s;
    case DateRangeOption::last7Days:
        return u"Last 7 Days"_s;
    case DateRangeOption::last30Days:
        return u"Last 30 Days"_s;
    case DateRangeOption::custom:
        return u"Custom"_s;
    }
    Q_UNREACHABLE();
}

QString label(InlineDateRangeOption range)
{
    switch (range) {
    case InlineDateRangeOption::today:
        return u"Today"_s;
    case InlineDateRangeOption::yesterday:
        return u"Yesterday"_s;
    case InlineDateRangeOption::last7Days:
        return u"Last 7 Days"_s;
    case InlineDateRangeOption::last30Days:
        return u"Last 30 Days"_s;
    case InlineDateRangeOption::all:
        return u"All Time"_s;
    }
    Q_UNREACHABLE();
}

QString label(ExportFormat format)
{
    switch (format) {
    case ExportFormat::text:
        return u"Text (.txt)"_s;
    case ExportFormat::markdown:
        return u"Markdown (.md)"_s;
    case ExportFormat::pdf:
        return u"PDF (.pdf)"_s;
    }
    Q_UNREACHABLE();
}

QString label(InlineExportFormat format)
{
    switch (format) {
    case InlineExportFormat::text:
        return u"Plain Text"_s;
    case InlineExportFormat::markdown:
        return u"Markdown"_s;
    case InlineExportFormat::pdf:
        return u"PDF"_s;
    }
    Q_UNREACHABLE();
}

ExportFormat exportFormat(InlineExportFormat format)
{
    switch (format) {
    case InlineExportFormat::text:
        return ExportFormat::text;
    case InlineExportFormat::markdown:
        return ExportFormat::markdown;
    case InlineExportFormat::pdf:
        return ExportFormat::pdf;
    }
    Q_UNREACHABLE();
}

QString fileExtension(ExportFormat format)
{
    switch (format) {
    case ExportFormat::text:
        return u"txt"_s;
    case ExportFormat::markdown:
        return u"md"_s;
    case ExportFormat::pdf:
        return u"pdf"_s;
    }
    Q_UNREACHABLE();
}
