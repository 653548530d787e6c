// SPDX-License-Identifier: MIT
#include "ExportOptions.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace
{

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(ExportOptions)
};

} // namespace

QString label(DateRangeOption range)
{
    switch (range) {
    case DateRangeOption::today:
        return Texts::tr("Today");
    case DateRangeOption::yesterday:
        return Texts::tr("Yesterday");
    case DateRangeOption::last7Days:
        return Texts::tr("Last 7 Days");
    case DateRangeOption::last30Days:
        return Texts::tr("Last 30 Days");
    case DateRangeOption::custom:
        return Texts::tr("Custom");
    }
    Q_UNREACHABLE();
}

QString label(InlineDateRangeOption range)
{
    switch (range) {
    case InlineDateRangeOption::today:
        return Texts::tr("Today");
    case InlineDateRangeOption::yesterday:
        return Texts::tr("Yesterday");
    case InlineDateRangeOption::last7Days:
        return Texts::tr("Last 7 Days");
    case InlineDateRangeOption::last30Days:
        return Texts::tr("Last 30 Days");
    case InlineDateRangeOption::all:
        return Texts::tr("All Time");
    }
    Q_UNREACHABLE();
}

QString label(ExportFormat format)
{
    switch (format) {
    case ExportFormat::text:
        return Texts::tr("Text (.txt)");
    case ExportFormat::markdown:
        return Texts::tr("Markdown (.md)");
    case ExportFormat::pdf:
        return Texts::tr("PDF (.pdf)");
    }
    Q_UNREACHABLE();
}

QString label(InlineExportFormat format)
{
    switch (format) {
    case InlineExportFormat::text:
        return Texts::tr("Plain Text");
    case InlineExportFormat::markdown:
        return Texts::tr("Markdown");
    case InlineExportFormat::pdf:
        return Texts::tr("PDF");
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
