// SPDX-License-Identifier: MIT
#pragma once

#include "Clock.h"
#include "ExportDocument.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct PdfColor {
    double red;
    double green;
    double blue;
};

/// The pages of a PDF, whose bytes go out as they are drawn. Lengths are points, y is measured from
/// the top edge of the page. One thread and, because fonts are shared, one canvas at a time.
class PdfCanvas
{
public:
    static constexpr double pageWidth = 612; // US Letter
    static constexpr double pageHeight = 792;

    /// The first page is begun. `sink` outlives the canvas. Without a font nothing is written, and
    /// nothing can be drawn.
    PdfCanvas(const ByteSink &sink, Instant created);
    PdfCanvas(const PdfCanvas &) = delete;
    PdfCanvas &operator=(const PdfCanvas &) = delete;
    ~PdfCanvas();

    /// Whether a font is installed that has the letters of our own words.
    bool hasFont() const { return m_hasFont; }
    /// Half a point wide.
    void drawRule(double left, double right, double y, const PdfColor &color);
    void beginPage();
    /// Ends the last page and the document.
    void finish();
    /// Why nothing is drawn any more; absent as long as all goes well.
    std::optional<QString> error() const;

private:
    friend class PdfText;
    struct Impl;

    std::unique_ptr<Impl> m_impl;
    bool m_hasFont;
};

/// `address` is regular, with every character drawn by itself.
enum class PdfFont { regular, bold, italic, address };

struct PdfStyle {
    double size;
    PdfFont font;
    PdfColor color;
    double width; ///< where lines are wrapped
};

/// Lays out texts of one style and draws them on a canvas.
class PdfText
{
public:
    /// `canvas` outlives this.
    PdfText(PdfCanvas &canvas, const PdfStyle &style);
    PdfText(const PdfText &) = delete;
    PdfText &operator=(const PdfText &) = delete;
    ~PdfText();

    /// The height of `text`, wrapped; what lies more than a page below its beginning is left out.
    double layOut(QStringView text);
    /// Draws what was laid out last, its upper left corner at (`x`, `y`).
    void draw(double x, double y);

private:
    struct Layout;
    /// A part of the text that is laid out at once.
    struct Piece {
        std::string_view text;
        std::optional<bool> isRightToLeft; ///< as the paragraph that it goes on with, if it does
        double height = 0;
    };

    Piece nextPiece(std::string_view rest);
    void setPiece(const Piece &piece);

    std::unique_ptr<Layout> m_layout;
    std::string m_text;
    std::vector<Piece> m_pieces; ///< of `m_text`
};

/// `text` as UTF-8 for printing: lines end in LF, tabs are spaces, other control characters are
/// left out, and what is no character is U+FFFD.
std::string printable(QStringView text);
