// SPDX-License-Identifier: MIT
#include "PdfWriter.h"

#include "DateText.h"
#include "PdfCanvas.h"

#include <cmath>
#include <mutex>

using namespace Qt::StringLiterals;

namespace
{

// Points, from the top edge.
constexpr double margin = 50;
constexpr double bottomLimit = PdfCanvas::pageHeight - margin;
constexpr double contentWidth = PdfCanvas::pageWidth - 2 * margin;
constexpr double indent = 10;
constexpr double spaceAfterTitleLine = 5;
constexpr double spaceAboveRule = 10;
constexpr double spaceBeforeLink = 15;
constexpr double spaceAfterBlock = 3;
constexpr double keepTogether = 80;

constexpr PdfColor black{0, 0, 0};
constexpr PdfColor grey{0.5, 0.5, 0.5};
constexpr PdfColor darkGrey{0.33, 0.33, 0.33};
constexpr PdfColor lightGrey{0.67, 0.67, 0.67};
constexpr PdfColor blue{0, 0.48, 1};

/// Puts block below block and begins a new page where one does not fit.
class PdfPages
{
public:
    PdfPages(const ByteSink &sink, Instant created)
        : m_canvas(sink, created)
    {
    }

    void addHeader(const QString &subtitle);
    void addLink(const CapturedLink &link, ExportLayout layout, const QString &copied);
    PdfCanvas &canvas() { return m_canvas; }

private:
    void addSummary(const CapturedLink &link);
    void addBlock(PdfText &style, const QString &text, double x = margin);
    void place(PdfText &style, const QString &text, double x);
    void beginPage();

    PdfCanvas m_canvas;
    PdfText m_documentTitle{m_canvas, {24, PdfFont::bold, black, contentWidth}};
    PdfText m_subtitle{m_canvas, {12, PdfFont::regular, grey, contentWidth}};
    PdfText m_linkTitle{m_canvas, {14, PdfFont::bold, black, contentWidth}};
    PdfText m_summary{m_canvas, {10, PdfFont::italic, darkGrey, contentWidth - indent}};
    PdfText m_url{m_canvas, {11, PdfFont::address, blue, contentWidth}};
    PdfText m_copied{m_canvas, {10, PdfFont::regular, grey, contentWidth}};
    double m_y = margin; ///< whole, as is every height, so comparing it is exact
};

void PdfPages::addHeader(const QString &subtitle)
{
    place(m_documentTitle, u"Strandloom Export"_s, margin);
    m_y += spaceAfterTitleLine;
    place(m_subtitle, subtitle, margin);
    m_y += spaceAboveRule;
    m_canvas.drawRule(margin, margin + contentWidth, m_y, lightGrey);
}

void PdfPages::addLink(const CapturedLink &link, ExportLayout layout, const QString &copied)
{
    m_y += spaceBeforeLink;
    if (m_y + keepTogether > bottomLimit)
        beginPage();
    addBlock(m_linkTitle, displayTitle(link));
    if (layout == ExportLayout::window)
        addSummary(link);
    addBlock(m_url, link.url);
    addBlock(m_copied, u"Copied: "_s + copied);
    if (layout == ExportLayout::compact)
        addSummary(link);
}

void PdfPages::addSummary(const CapturedLink &link)
{
    if (link.summary)
        addBlock(m_summary, *link.summary, margin + indent);
}

void PdfPages::addBlock(PdfText &style, const QString &text, double x)
{
    place(style, text, x);
    m_y += spaceAfterBlock;
}

void PdfPages::place(PdfText &style, const QString &text, double x)
{
    const double height = std::ceil(style.layOut(text));
    if (m_y + height > bottomLimit)
        beginPage();
    style.draw(x, m_y);
    m_y += height;
}

void PdfPages::beginPage()
{
    m_canvas.beginPage();
    m_y = margin;
}

} // namespace

Expected<void, ExportError> writePdf(const ExportDocument &document, const ByteSink &sink)
{
    static std::mutex oneAtATime;
    const std::lock_guard lock(oneAtATime);

    const DateText dates(document.locale, document.zone);
    const auto count = QString::number(document.links.size());
    PdfPages pages(sink, document.now);
    if (!pages.canvas().hasFont())
        return Unexpected{ExportError{ExportError::Kind::noFont}};
    const QString today = dates.longDate(document.now);
    // Marked as a piece of its own, else the count is drawn into a date from right to left.
    const QString date = dates.isRightToLeft() ? u'\u2068' + today + u'\u2069' : today;
    pages.addHeader(u"Exported on "_s + date + u" • " + count + u" links");
    for (const CapturedLink &link : document.links) {
        pages.addLink(link, document.layout, dates.mediumDateShortTime(link.copiedAt));
        if (pages.canvas().error())
            break;
    }
    pages.canvas().finish();
    if (const auto error = pages.canvas().error())
        return Unexpected{ExportError{ExportError::Kind::cannotDraw, *error}};
    return {};
}
