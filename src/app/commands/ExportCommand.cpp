// SPDX-License-Identifier: MIT
#include "commands/ExportCommand.h"

#include "DateText.h"
#include "ExportFile.h"
#include "LinkSelection.h"
#include "LinkStream.h"
#include "LinkWriter.h"
#include "ModelContainer.h"
#include "StoreReader.h"
#include "SystemClock.h"
#include "commands/Terminal.h"

#include <QCommandLineParser>

using namespace Qt::StringLiterals;

namespace
{

using Format = decltype(ExportRequest::format);

std::optional<Format> formatNamed(const QString &name)
{
    if (name == u"text")
        return ExportFormat::text;
    if (name == u"markdown")
        return ExportFormat::markdown;
    if (name == u"pdf")
        return ExportFormat::pdf;
    if (name == u"json")
        return &jsonFormat;
    if (name == u"netscape")
        return &netscapeFormat;
    return std::nullopt;
}

std::optional<ExportLayout> layoutNamed(const QString &name)
{
    if (name == u"window")
        return ExportLayout::window;
    if (name == u"compact")
        return ExportLayout::compact;
    return std::nullopt;
}

/// One export of the links in the user's store.
class Export
{
public:
    explicit Export(const ExportRequest &request)
        : m_request(request)
        , m_selection(request.dates, request.search, LocalizedSearch(systemLocale()))
    {
    }

    Outcome write(const ByteSink &sink)
    {
        if (const auto *const document = std::get_if<ExportFormat>(&m_request.format))
            return writeAsDocument(*document, sink);
        return writeAsStream(*std::get<const LinkFormat *>(m_request.format), sink);
    }
    const QList<LinkId> &ids() const { return m_ids; }
    qint64 damaged() const { return m_damaged; }

private:
    Outcome writeAsDocument(ExportFormat format, const ByteSink &sink)
    {
        ExportDocument document{{}, m_request.layout, SystemClock().now(), systemLocale()};
        const Outcome read = forEachLink([&document](const CapturedLink &link) {
            document.links.append(link);
            return true;
        });
        if (!read)
            return read;
        const ExportResult written = writeDocument(document, format, sink);
        return written ? Outcome() : Unexpected{description(written.error())};
    }

    Outcome writeAsStream(const LinkFormat &format, const ByteSink &sink)
    {
        LinkStream stream(format, sink);
        const Outcome read =
            forEachLink([&stream](const CapturedLink &link) { return stream.write(link); });
        if (read)
            stream.end();
        return read;
    }

    /// Hands out the selected links in their order until `take` wants no more.
    Outcome forEachLink(const std::function<bool(const CapturedLink &)> &take)
    {
        const bool isWindow = m_request.layout == ExportLayout::window;
        const auto damaged = forEachVisibleLink(
            ModelContainer::defaultFolder(), isWindow ? LinkOrder::store : LinkOrder::newestFirst,
            [&](const CapturedLink &link) {
                if (!m_selection.accepts(link))
                    return true;
                m_ids.append(link.id);
                return take(link);
            });
        m_damaged = damaged ? *damaged : 0;
        return damaged ? Outcome() : Unexpected{description(damaged.error())};
    }

    const ExportRequest &m_request;
    LinkSelection m_selection;
    QList<LinkId> m_ids; ///< of the links that were written
    qint64 m_damaged = 0; ///< links that could not be
};

LinkWriter::Result hide(const QList<LinkId> &ids)
{
    SystemClock clock;
    WriteAccess access(clock);
    const auto writer = access.writer();
    return writer ? (*writer)->hideExported(ids) : Unexpected{writer.error()};
}

} // namespace

Expected<ExportRequest, QString> parseExportArguments(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.addOptions({{u"format"_s, {}, u"FORMAT"_s},
                       {u"output"_s, {}, u"FILE"_s},
                       {u"range"_s, {}, u"RANGE"_s, u"all"_s},
                       {u"search"_s, {}, u"TEXT"_s},
                       {u"layout"_s, {}, u"LAYOUT"_s, u"window"_s},
                       {u"hide"_s, {}}});
    if (const auto parsed = parseOptions(parser, arguments); !parsed)
        return Unexpected{parsed.error()};

    const auto format = formatNamed(parser.value(u"format"_s));
    if (!format)
        return Unexpected{QString(u"--format takes text, markdown, pdf, json or netscape"_s)};
    const QString output = parser.value(u"output"_s);
    if (output.isEmpty())
        return Unexpected{QString(u"--output takes a file, or - for standard output"_s)};
    const auto dates = parseSpan(parser.value(u"range"_s), SystemClock().now());
    if (!dates)
        return Unexpected{QString(u"--range takes today, yesterday, last7Days, last30Days, all, or "
                                  "FROM..TO in ISO dates"_s)};
    const auto layout = layoutNamed(parser.value(u"layout"_s));
    if (!layout)
        return Unexpected{QString(u"--layout takes window or compact"_s)};
    return ExportRequest{
        *format, output, *dates, parser.value(u"search"_s), *layout, parser.isSet(u"hide"_s)};
}

int runExport(const ExportRequest &request)
{
    Export links(request);
    const Outcome written =
        writeTo(request.output, [&links](const ByteSink &sink) { return links.write(sink); });
    if (!written)
        return fail(written.error());
    if (request.hidesLinks) {
        if (const auto hidden = hide(links.ids()); !hidden)
            return fail(u"the links were exported but not hidden: " + hidden.error().reason,
                        hidden.error().code);
    }
    return finish(links.ids().isEmpty() ? ExitCode::nothing : ExitCode::done, links.damaged());
}
