// SPDX-License-Identifier: MIT
#include "PdfCanvas.h"

#include "Utf8.h"

#include <QDateTime>

#include <cairo-pdf.h>
#include <cmath>
#include <fontconfig/fontconfig.h>
#include <map>
#include <pango/pangocairo.h>
#include <pango/pangofc-fontmap.h>
#include <span>

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

double inPoints(int pangoUnits)
{
    return double(pangoUnits) / PANGO_SCALE;
}

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

using FontConfig = Owned<FcConfig, FcConfigDestroy>;

/// The system's fonts, none of them slanted by force where a family has no italic face.
FontConfig fontConfig()
{
    constexpr auto noSlanting = R"(<?xml version="1.0"?><!DOCTYPE fontconfig SYSTEM "fonts.dtd">
        <fontconfig><match target="font"><test name="color"><bool>false</bool></test>
        <edit name="matrix" mode="delete_all"/></match></fontconfig>)";
    FontConfig config(FcInitLoadConfigAndFonts());
    FcConfigParseAndLoadFromMemory(config.get(), reinterpret_cast<const FcChar8 *>(noSlanting),
                                   FcFalse);
    return config;
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

Surface surface(const ByteSink &sink, Instant instant)
{
    Surface pdf(cairo_pdf_surface_create_for_stream(write, const_cast<ByteSink *>(&sink),
                                                    PdfCanvas::pageWidth, PdfCanvas::pageHeight));
    const auto created =
        QDateTime::fromSecsSinceEpoch(
            std::chrono::floor<std::chrono::seconds>(instant).time_since_epoch().count(), Qt::UTC)
            .toString(Qt::ISODate)
            .toUtf8();
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

/// The image of a character that fonts hold as pictures.
struct Picture {
    Surface pixels;
    double left; ///< of its lower left corner, in points
    double top;
};

/// What one point is in a picture: sharp in print.
constexpr double pixelsPerPoint = 8;

bool isOfPictures(PangoFont *font)
{
    FcBool hasColor = FcFalse;
    FcPattern *const pattern = pango_fc_font_get_pattern(PANGO_FC_FONT(font));
    return FcPatternGetBool(pattern, FC_COLOR, 0, &hasColor) == FcResultMatch && hasColor;
}

Picture picture(PangoFont *font, unsigned long glyph)
{
    cairo_scaled_font_t *const scaled = pango_cairo_font_get_scaled_font(PANGO_CAIRO_FONT(font));
    cairo_matrix_t matrix;
    cairo_scaled_font_get_font_matrix(scaled, &matrix);
    matrix.xy = matrix.yx = 0; // upright
    Surface pixels(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 1, 1));
    const Owned<cairo_t, cairo_destroy> measuring(cairo_create(pixels.get()));
    const auto prepare = [&](cairo_t *cairo) {
        cairo_scale(cairo, pixelsPerPoint, pixelsPerPoint);
        cairo_set_font_face(cairo, cairo_scaled_font_get_font_face(scaled));
        cairo_set_font_matrix(cairo, &matrix);
    };
    prepare(measuring.get());
    const cairo_glyph_t atOrigin{glyph, 0, 0};
    cairo_text_extents_t box;
    cairo_glyph_extents(measuring.get(), &atOrigin, 1, &box);
    pixels.reset(cairo_image_surface_create(CAIRO_FORMAT_ARGB32,
                                            int(std::ceil(box.width * pixelsPerPoint)),
                                            int(std::ceil(box.height * pixelsPerPoint))));
    const Owned<cairo_t, cairo_destroy> drawing(cairo_create(pixels.get()));
    prepare(drawing.get());
    const cairo_glyph_t inside{glyph, -box.x_bearing, -box.y_bearing};
    cairo_show_glyphs(drawing.get(), &inside, 1);
    return {std::move(pixels), box.x_bearing, box.y_bearing};
}

} // namespace

struct PdfCanvas::Impl {
    Surface surface;
    Owned<cairo_t, cairo_destroy> cairo;
    Owned<PangoFontMap> fonts;
    Owned<PangoContext> context;
    Owned<PangoFont> font;
    std::map<std::pair<PangoFont *, PangoGlyph>, Picture> pictures;

    /// False where none has the letters of our own words.
    bool loadFont();
    void drawRun(const char *text, PangoGlyphItem &run, double x, double y);
    void drawPicture(PangoFont *ofPictures, PangoGlyph glyph, double x, double y);
    void addText(std::string_view text, double x, double y, double width);
};

bool PdfCanvas::Impl::loadFont()
{
    const FontDescription any = fontDescription(12, PdfFont::regular);
    font.reset(pango_font_map_load_font(fonts.get(), context.get(), any.get()));
    if (!font)
        return false;
    const Owned<PangoLayout> sample(pango_layout_new(context.get()));
    pango_layout_set_font_description(sample.get(), any.get());
    pango_layout_set_text(sample.get(), "Strandloom", -1);
    PangoRectangle ink;
    pango_layout_get_extents(sample.get(), &ink, nullptr);
    return ink.width > 0 && pango_layout_get_unknown_glyphs_count(sample.get()) == 0;
}

/// Cairo would draw pictures as small as a screen has them, and forget what they stand for.
void PdfCanvas::Impl::drawRun(const char *text, PangoGlyphItem &run, double x, double y)
{
    PangoFont *const used = run.item->analysis.font;
    if (!isOfPictures(used)) {
        cairo_save(cairo.get());
        cairo_translate(cairo.get(), x, y); // a point to begin at would be rounded
        cairo_move_to(cairo.get(), 0, 0);
        pango_cairo_show_glyph_item(cairo.get(), text, &run);
        return cairo_restore(cairo.get());
    }
    // Glyphs stand from left to right, clusters come in the order of the text.
    const bool isRightToLeft = run.item->analysis.level % 2 == 1;
    double edge = isRightToLeft ? x + inPoints(pango_glyph_string_get_width(run.glyphs)) : x;
    PangoGlyphItemIter cluster;
    for (bool is = pango_glyph_item_iter_init_start(&cluster, &run, text); is;
         is = pango_glyph_item_iter_next_cluster(&cluster)) {
        const std::span glyphs(run.glyphs->glyphs
                                   + (isRightToLeft ? cluster.end_glyph + 1 : cluster.start_glyph),
                               std::abs(cluster.end_glyph - cluster.start_glyph));
        double width = 0;
        for (const PangoGlyphInfo &each : glyphs)
            width += inPoints(each.geometry.width);
        const double left = isRightToLeft ? edge - width : edge;
        edge = isRightToLeft ? left : edge + width;
        if (width > 0)
            addText({text + cluster.start_index, text + cluster.end_index}, left, y, width);
        double pen = left;
        for (const PangoGlyphInfo &each : glyphs) {
            drawPicture(used, each.glyph, pen + inPoints(each.geometry.x_offset),
                        y + inPoints(each.geometry.y_offset));
            pen += inPoints(each.geometry.width);
        }
    }
}

void PdfCanvas::Impl::drawPicture(PangoFont *ofPictures, PangoGlyph glyph, double x, double y)
{
    if (glyph == PANGO_GLYPH_EMPTY || glyph & PANGO_GLYPH_UNKNOWN_FLAG)
        return;
    auto known = pictures.find({ofPictures, glyph});
    if (known == pictures.end())
        known = pictures.emplace(std::pair(ofPictures, glyph), picture(ofPictures, glyph)).first;
    const auto &[pixels, left, top] = known->second;
    cairo_save(cairo.get());
    cairo_translate(cairo.get(), x + left, y + top);
    cairo_scale(cairo.get(), 1 / pixelsPerPoint, 1 / pixelsPerPoint);
    cairo_set_source_surface(cairo.get(), pixels.get(), 0, 0);
    // As one tile of a pattern: Cairo names a painted image twice on a page that has it twice.
    cairo_pattern_set_extend(cairo_get_source(cairo.get()), CAIRO_EXTEND_REPEAT);
    cairo_rectangle(cairo.get(), 0, 0, cairo_image_surface_get_width(pixels.get()),
                    cairo_image_surface_get_height(pixels.get()));
    cairo_fill(cairo.get());
    cairo_restore(cairo.get());
}

/// Text that is not seen, for readers who search or copy: a space that stands for it, as wide.
void PdfCanvas::Impl::addText(std::string_view text, double x, double y, double width)
{
    cairo_scaled_font_t *const scaled =
        pango_cairo_font_get_scaled_font(PANGO_CAIRO_FONT(font.get()));
    const cairo_glyph_t space{pango_fc_font_get_glyph(PANGO_FC_FONT(font.get()), ' '), x, y};
    cairo_text_extents_t box;
    cairo_scaled_font_glyph_extents(scaled, &space, 1, &box);
    cairo_matrix_t matrix;
    cairo_scaled_font_get_font_matrix(scaled, &matrix);
    cairo_matrix_scale(&matrix, width / box.x_advance, 1);
    cairo_set_font_face(cairo.get(), cairo_scaled_font_get_font_face(scaled));
    cairo_set_font_matrix(cairo.get(), &matrix);
    const cairo_text_cluster_t whole{int(text.size()), 1};
    cairo_show_text_glyphs(cairo.get(), text.data(), int(text.size()), &space, 1, &whole, 1,
                           cairo_text_cluster_flags_t(0));
}

PdfCanvas::PdfCanvas(const ByteSink &sink, Instant created)
    : m_impl(std::make_unique<Impl>())
{
    m_impl->fonts.reset(pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT));
    pango_cairo_font_map_set_resolution(PANGO_CAIRO_FONT_MAP(m_impl->fonts.get()), 72);
    pango_fc_font_map_set_config(PANGO_FC_FONT_MAP(m_impl->fonts.get()), fontConfig().get());
    m_impl->context.reset(pango_font_map_create_context(m_impl->fonts.get()));
    pango_context_set_round_glyph_positions(m_impl->context.get(), false);
    m_hasFont = m_impl->loadFont();
    if (!m_hasFont)
        return;
    m_impl->surface = ::surface(sink, created);
    m_impl->cairo.reset(cairo_create(m_impl->surface.get()));
    pango_cairo_update_context(m_impl->cairo.get(), m_impl->context.get());
}

PdfCanvas::~PdfCanvas() = default;

void PdfCanvas::drawRule(double left, double right, double y, const PdfColor &color)
{
    cairo_t *const cairo = m_impl->cairo.get();
    cairo_set_source_rgb(cairo, color.red, color.green, color.blue);
    cairo_set_line_width(cairo, 0.5);
    cairo_move_to(cairo, left, y);
    cairo_line_to(cairo, right, y);
    cairo_stroke(cairo);
}

void PdfCanvas::beginPage()
{
    cairo_show_page(m_impl->cairo.get());
}

void PdfCanvas::finish()
{
    cairo_show_page(m_impl->cairo.get());
    cairo_surface_finish(m_impl->surface.get());
}

std::optional<QString> PdfCanvas::error() const
{
    const auto ofPage = cairo_status(m_impl->cairo.get());
    const auto status = ofPage ? ofPage : cairo_surface_status(m_impl->surface.get());
    return status ? std::optional(readUtf8(cairo_status_to_string(status))) : std::nullopt;
}

struct PdfText::Layout {
    PdfCanvas::Impl &canvas;
    PdfColor color;
    Owned<PangoLayout> pango;

    void setText(std::string_view text)
    {
        pango_layout_set_text(pango.get(), text.data(), int(text.size()));
    }
    /// Of all lines; absent: of each paragraph as it begins.
    void setDirection(std::optional<bool> isRightToLeft)
    {
        PangoContext *const context = pango_layout_get_context(pango.get());
        const PangoDirection base = !isRightToLeft ? PANGO_DIRECTION_WEAK_LTR
            : *isRightToLeft                       ? PANGO_DIRECTION_RTL
                                                   : PANGO_DIRECTION_LTR;
        const bool isSet = pango_context_get_base_dir(context) == base
            && bool(pango_layout_get_auto_dir(pango.get())) == !isRightToLeft;
        if (isSet)
            return;
        pango_context_set_base_dir(context, base);
        pango_layout_set_auto_dir(pango.get(), !isRightToLeft); // which turns the alignment, too
        pango_layout_set_alignment(
            pango.get(), isRightToLeft.value_or(false) ? PANGO_ALIGN_RIGHT : PANGO_ALIGN_LEFT);
        pango_layout_context_changed(pango.get());
    }
    bool endsRightToLeft() const
    {
        const int last = pango_layout_get_line_count(pango.get()) - 1;
        auto *const line = pango_layout_get_line_readonly(pango.get(), last);
        return pango_layout_line_get_resolved_direction(line) == PANGO_DIRECTION_RTL;
    }
    double height() const
    {
        int height = 0;
        pango_layout_get_size(pango.get(), nullptr, &height);
        return inPoints(height);
    }
    void draw(double x, double y) const
    {
        const char *const text = pango_layout_get_text(pango.get());
        const Owned<PangoLayoutIter, pango_layout_iter_free> at(pango_layout_get_iter(pango.get()));
        do {
            PangoLayoutRun *const run = pango_layout_iter_get_run(at.get());
            if (!run)
                continue; // the end of a line
            PangoRectangle box;
            pango_layout_iter_get_run_extents(at.get(), nullptr, &box);
            const int baseline = pango_layout_iter_get_baseline(at.get());
            canvas.drawRun(text, *run, x + inPoints(box.x), y + inPoints(baseline));
        } while (pango_layout_iter_next_run(at.get()));
    }
};

PdfText::PdfText(PdfCanvas &canvas, const PdfStyle &style)
    : m_layout(std::make_unique<Layout>(
        Layout{*canvas.m_impl, style.color,
               Owned<PangoLayout>(pango_layout_new(canvas.m_impl->context.get()))}))
{
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

/// The beginning of `rest`, up to the start of a line where it is long. A paragraph that goes on
/// from one piece to the next keeps its direction.
PdfText::Piece PdfText::nextPiece(std::string_view rest)
{
    Piece piece;
    if (!m_pieces.empty() && *(rest.data() - 1) != '\n') {
        piece.isRightToLeft = m_layout->endsRightToLeft(); // it still holds the piece before
        rest = rest.substr(0, rest.find('\n'));
    }
    piece.text = start(rest, sliceSize);
    setPiece(piece);
    PangoLayout *const pango = m_layout->pango.get();
    const int lines = pango_layout_get_line_count(pango);
    if (piece.text.size() < rest.size() && lines > 1) {
        const auto *const last = pango_layout_get_line_readonly(pango, lines - 1);
        piece.text = piece.text.substr(0, last->start_index);
        if (piece.text.ends_with('\n')) // would be laid out as one more line
            piece.text.remove_suffix(1);
        m_layout->setText(piece.text);
    }
    piece.height = m_layout->height();
    return piece;
}

void PdfText::setPiece(const Piece &piece)
{
    m_layout->setText(piece.text);
    m_layout->setDirection(piece.isRightToLeft);
}

void PdfText::draw(double x, double y)
{
    const PdfColor &color = m_layout->color;
    cairo_set_source_rgb(m_layout->canvas.cairo.get(), color.red, color.green, color.blue);
    if (m_pieces.size() == 1)
        return m_layout->draw(x, y); // it is still laid out
    for (const Piece &piece : m_pieces) {
        setPiece(piece);
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
