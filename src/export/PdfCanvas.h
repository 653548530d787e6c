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

struct PdfMetadata {
    QString title;
    Instant created;
};

/// The pages of a PDF, whose bytes go out as they are drawn. Lengths are points, y is measured from
/// the top edge of the page. One thread and, because fonts are shared, one canvas at a time.
class PdfCanvas
{
public:
    static constexpr double pageWidth = 612; // US Letter
    static constexpr double pageHeight = 792;

    /// The first page is begun. `sink` outlives the canvas.
    PdfCanvas(const ByteSink &sink, const PdfMetadata &metadata);
    PdfCanvas(const PdfCanvas &) = delete;
    PdfCanvas &operator=(const PdfCanvas &) = delete;
    ~PdfCanvas();

    /// Whether anything can be written at all.
    bool hasFont() const;
    /// Half a point wide.
    void drawRule(double left, double right, double y, const PdfColor &color);
    void beginPage();
    /// Ends the last page and the document.
    void finish();
    /// Why nothing is drawn any more; absent as long as all goes well.
    std::optional<QString> error() const;

private:
    friend class PdfText;
    struct Parts;

    std::unique_ptr<Parts> m_parts;
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
    struct Piece {
        std::string_view text;
        double height;
    };

    Piece nextPiece(std::string_view rest);

    std::unique_ptr<Layout> m_layout;
    std::string m_text;
    std::vector<Piece> m_pieces; ///< of `m_text`
};

/// `text` as UTF-8 for printing: lines end in LF, tabs are spaces, other control characters are
/// left out, and what is no character is U+FFFD.
std::string printable(QStringView text);
