// SPDX-License-Identifier: MIT
#include "PdfCanvas.h"

#include "Utf8.h"

#include <QDateTime>

#include <cairo-pdf.h>
#include <pango/pangocairo.h>

using namespace Qt::StringLiterals;

namespace
{

/// Pango takes a time that grows with the square of an unbroken text.
constexpr std::size_t sliceSize = 2000;
/// More than a page can hold of the narrowest letters; the rest of a text would not be seen.
constexpr qsizetype mostOfAPage = 16384;

template <auto release>
struct Release {
    template <typename T>
    void operator()(T *pointer) const
    {
        release(pointer);
    }
};
template <typename T, auto release = g_object_unref>
using Owned = std::unique_ptr<T, Release<release>>;
using Attributes = Owned<PangoAttrList, pango_attr_list_unref>;
using FontDescription = Owned<PangoFontDescription, pango_font_description_free>;

FontDescription fontDescription(double size, PdfFont font)
{
    FontDescription description(pango_font_description_new());
    pango_font_description_set_family_static(description.get(), "Noto Sans, sans-serif");
    pango_font_description_set_size(description.get(), int(size * PANGO_SCALE));
    if (font == PdfFont::bold)
        pango_font_description_set_weight(description.get(), PANGO_WEIGHT_BOLD);
    if (font == PdfFont::italic)
        pango_font_description_set_style(description.get(), PANGO_STYLE_ITALIC);
    return description;
}

Attributes attributes(PdfFont font)
{
    Attributes list(pango_attr_list_new());
    pango_attr_list_insert(list.get(), pango_attr_insert_hyphens_new(false));
    if (font == PdfFont::address)
        pango_attr_list_insert(list.get(), pango_attr_font_features_new("liga=0, clig=0"));
    return list;
}

cairo_status_t write(void *closure, const unsigned char *bytes, unsigned size)
{
    const auto &sink = *static_cast<const ByteSink *>(closure);
    return sink(QByteArrayView(bytes, size)) ? CAIRO_STATUS_SUCCESS : CAIRO_STATUS_WRITE_ERROR;
}

using Surface = Owned<cairo_surface_t, cairo_surface_destroy>;

Surface surface(const ByteSink &sink, const PdfMetadata &metadata)
{
    Surface pdf(cairo_pdf_surface_create_for_stream(write, const_cast<ByteSink *>(&sink),
                                                    PdfCanvas::pageWidth, PdfCanvas::pageHeight));
    const auto created =
        QDateTime::fromSecsSinceEpoch(
            std::chrono::floor<std::chrono::seconds>(metadata.created).time_since_epoch().count(),
            Qt::UTC)
            .toString(Qt::ISODate)
            .toUtf8();
    cairo_pdf_surface_set_metadata(pdf.get(), CAIRO_PDF_METADATA_TITLE,
                                   metadata.title.toUtf8().constData());
    cairo_pdf_surface_set_metadata(pdf.get(), CAIRO_PDF_METADATA_CREATOR,
                                   "Strandloom " STRANDLOOM_VERSION);
    cairo_pdf_surface_set_metadata(pdf.get(), CAIRO_PDF_METADATA_CREATE_DATE, created.constData());
    return pdf;
}

/// `text` up to `size` bytes or a little less, so that no character is cut.
std::string_view start(std::string_view text, std::size_t size)
{
    if (text.size() <= size)
        return text;
    while (size > 0 && (text[size] & 0xC0) == 0x80)
        --size;
    return text.substr(0, size);
}

} // namespace

struct PdfCanvas::Parts {
    Surface surface;
    Owned<cairo_t, cairo_destroy> cairo;
    Owned<PangoFontMap> fonts;
    Owned<PangoContext> context;
};

PdfCanvas::PdfCanvas(const ByteSink &sink, const PdfMetadata &metadata)
    : m_parts(std::make_unique<Parts>())
{
    m_parts->surface = ::surface(sink, metadata);
    m_parts->cairo.reset(cairo_create(m_parts->surface.get()));
    m_parts->fonts.reset(pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT));
    pango_cairo_font_map_set_resolution(PANGO_CAIRO_FONT_MAP(m_parts->fonts.get()), 72);
    m_parts->context.reset(pango_font_map_create_context(m_parts->fonts.get()));
    pango_cairo_update_context(m_parts->cairo.get(), m_parts->context.get());
    pango_context_set_round_glyph_positions(m_parts->context.get(), false);
}

PdfCanvas::~PdfCanvas() = default;

bool PdfCanvas::hasFont() const
{
    const FontDescription any = fontDescription(12, PdfFont::regular);
    const Owned<PangoFont> font(
        pango_font_map_load_font(m_parts->fonts.get(), m_parts->context.get(), any.get()));
    return font != nullptr;
}

void PdfCanvas::drawRule(double left, double right, double y, const PdfColor &color)
{
    cairo_t *const cairo = m_parts->cairo.get();
    cairo_set_source_rgb(cairo, color.red, color.green, color.blue);
    cairo_set_line_width(cairo, 0.5);
    cairo_move_to(cairo, left, y);
    cairo_line_to(cairo, right, y);
    cairo_stroke(cairo);
}

void PdfCanvas::beginPage()
{
    cairo_show_page(m_parts->cairo.get());
}

void PdfCanvas::finish()
{
    cairo_show_page(m_parts->cairo.get());
    cairo_surface_finish(m_parts->surface.get());
}

std::optional<QString> PdfCanvas::error() const
{
    const auto ofPage = cairo_status(m_parts->cairo.get());
    const auto status = ofPage ? ofPage : cairo_surface_status(m_parts->surface.get());
    return status ? std::optional(readUtf8(cairo_status_to_string(status))) : std::nullopt;
}

struct PdfText::Layout {
    cairo_t *cairo;
    PdfColor color;
    Owned<PangoLayout> pango;

    void setText(std::string_view text)
    {
        pango_layout_set_text(pango.get(), text.data(), int(text.size()));
    }
    double height() const
    {
        int height = 0;
        pango_layout_get_size(pango.get(), nullptr, &height);
        return double(height) / PANGO_SCALE;
    }
    void draw(double x, double y) const
    {
        cairo_move_to(cairo, x, y);
        pango_cairo_show_layout(cairo, pango.get());
    }
};

PdfText::PdfText(PdfCanvas &canvas, const PdfStyle &style)
    : m_layout(std::make_unique<Layout>())
{
    m_layout->cairo = canvas.m_parts->cairo.get();
    m_layout->color = style.color;
    m_layout->pango.reset(pango_layout_new(canvas.m_parts->context.get()));
    PangoLayout *const pango = m_layout->pango.get();
    pango_layout_set_font_description(pango, fontDescription(style.size, style.font).get());
    pango_layout_set_attributes(pango, attributes(style.font).get());
    pango_layout_set_width(pango, int(style.width * PANGO_SCALE));
    pango_layout_set_wrap(pango, PANGO_WRAP_WORD_CHAR);
}

PdfText::~PdfText() = default;

double PdfText::layOut(QStringView text)
{
    m_text = printable(text.first(std::min(text.size(), mostOfAPage)));
    m_pieces.clear();
    std::string_view rest = m_text;
    double height = 0;
    do {
        const Piece piece = nextPiece(rest);
        m_pieces.push_back(piece);
        height += piece.height;
        rest.remove_prefix(piece.text.size());
        if (rest.starts_with('\n'))
            rest.remove_prefix(1);
    } while (!rest.empty() && height <= PdfCanvas::pageHeight);
    return height;
}

/// The beginning of `rest`, up to the start of a line where it is long.
PdfText::Piece PdfText::nextPiece(std::string_view rest)
{
    std::string_view text = start(rest, sliceSize);
    m_layout->setText(text);
    const int lines = pango_layout_get_line_count(m_layout->pango.get());
    if (text.size() < rest.size() && lines > 1) {
        const auto *const last = pango_layout_get_line_readonly(m_layout->pango.get(), lines - 1);
        text = text.substr(0, last->start_index);
        if (text.ends_with('\n')) // would be laid out as one more line
            text.remove_suffix(1);
        m_layout->setText(text);
    }
    return {text, m_layout->height()};
}

void PdfText::draw(double x, double y)
{
    const PdfColor &color = m_layout->color;
    cairo_set_source_rgb(m_layout->cairo, color.red, color.green, color.blue);
    if (m_pieces.size() == 1)
        return m_layout->draw(x, y); // it is still laid out
    for (const Piece &piece : m_pieces) {
        m_layout->setText(piece.text);
        m_layout->draw(x, y);
        y += piece.height;
    }
}

std::string printable(QStringView text)
{
    QString clean;
    clean.reserve(text.size());
    const QList<uint> characters = text.toUcs4(); // lone surrogates are U+FFFD by now
    for (qsizetype i = 0; i < characters.size(); ++i) {
        const char32_t character = characters[i];
        const bool isBeforeLineFeed = characters.value(i + 1) == u'\n';
        if (QChar::isNonCharacter(character)) // with one of them Cairo draws nothing any more
            clean += QChar(QChar::ReplacementCharacter);
        else if (character == u'\r' && !isBeforeLineFeed)
            clean += u'\n';
        else if (character == u'\t')
            clean += u' ';
        else if (character == u'\n' || QChar::category(character) != QChar::Other_Control)
            clean += QChar::fromUcs4(character);
    }
    return clean.toStdString();
}
