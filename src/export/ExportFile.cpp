// SPDX-License-Identifier: MIT
#include "ExportFile.h"

#include "AtomicFile.h"
#include "MarkdownWriter.h"
#include "PdfModule.h"
#include "TextWriter.h"
#include "Utf8.h"

namespace
{

ExportResult writePdf(const ExportDocument &document, const ByteSink &sink)
{
    const auto module = loadModule<PdfModule>();
    if (!module)
        return Unexpected{ExportError{ExportError::Kind::notLoaded, readUtf8(module.error())}};
    return (*module)->write(document, sink);
}

Unexpected<ExportError> cannotWrite(const FileError &error)
{
    return Unexpected{ExportError{ExportError::Kind::cannotWrite, description(error)}};
}

} // namespace

ExportResult writeDocument(const ExportDocument &document, ExportFormat format,
                           const ByteSink &sink)
{
    switch (format) {
    case ExportFormat::text:
        writeText(document, sink);
        return {};
    case ExportFormat::markdown:
        writeMarkdown(document, sink);
        return {};
    case ExportFormat::pdf:
        return writePdf(document, sink);
    }
    Q_UNREACHABLE();
}

ExportResult exportToFile(const ExportDocument &document, ExportFormat format, const QString &path,
                          const std::stop_token &stop)
{
    auto file = AtomicFile::open(path);
    if (!file)
        return cannotWrite(file.error());

    bool isWriting = true;
    const ExportResult drawn = writeDocument(document, format, [&](QByteArrayView bytes) {
        return !stop.stop_requested() && (isWriting = file->write(bytes));
    });
    if (stop.stop_requested())
        return Unexpected{ExportError{ExportError::Kind::stopped}};
    if (!drawn && isWriting)
        return drawn;
    if (const auto saved = file->commit(); !saved)
        return cannotWrite(saved.error());
    return {};
}
