// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <array>

/// What the window screen offers as dates.
enum class DateRangeOption : quint8 { today, yesterday, last7Days, last30Days, custom };
/// What the compact screen offers as dates.
enum class InlineDateRangeOption : quint8 { today, yesterday, last7Days, last30Days, all };
/// The formats, as the window screen offers them.
enum class ExportFormat : quint8 { text, markdown, pdf };
/// The formats, as the compact screen offers them.
enum class InlineExportFormat : quint8 { text, markdown, pdf };

/// Each in the order in which it is offered.
inline constexpr std::array dateRangeOptions{DateRangeOption::today, DateRangeOption::yesterday,
                                             DateRangeOption::last7Days,
                                             DateRangeOption::last30Days, DateRangeOption::custom};
inline constexpr std::array inlineDateRangeOptions{
    InlineDateRangeOption::today, InlineDateRangeOption::yesterday,
    InlineDateRangeOption::last7Days, InlineDateRangeOption::last30Days,
    InlineDateRangeOption::all};
inline constexpr std::array exportFormats{ExportFormat::text, ExportFormat::markdown,
                                          ExportFormat::pdf};
inline constexpr std::array inlineExportFormats{
    InlineExportFormat::text, InlineExportFormat::markdown, InlineExportFormat::pdf};

QString label(DateRangeOption range);
QString label(InlineDateRangeOption range);
QString label(ExportFormat format);
QString label(InlineExportFormat format);

/// The same format without the screen.
ExportFormat exportFormat(InlineExportFormat format);
/// Of file names, without the dot.
QString fileExtension(ExportFormat format);

/// How one link's lines follow each other: `window` has the summary behind the title, `compact` has
/// it last. In Markdown both are the same.
enum class ExportLayout { window, compact };
