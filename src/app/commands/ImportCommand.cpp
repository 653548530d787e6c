// SPDX-License-Identifier: MIT
#include "commands/ImportCommand.h"

#include "LinkFileReader.h"
#include "LinkWriter.h"
#include "SystemClock.h"
#include "commands/Terminal.h"

#include <QCommandLineParser>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{

/// One import, in slices that the store takes quickly.
class Import
{
public:
    LinkWriter::Result run(QIODevice &input)
    {
        LinkFileReader reader(input, m_clock.now());
        while (const auto entry = reader.next()) {
            if (!entry->link) {
                m_counts.note(Refusal::noWebAddress);
                continue;
            }
            m_sliceSize += sizeOf(*entry->link);
            m_slice.append(*entry->link);
            if (m_slice.size() < sliceLimit && m_sliceSize < sizeLimit)
                continue;
            if (const auto stored = storeSlice(); !stored)
                return stored;
        }
        return m_slice.isEmpty() ? LinkWriter::Result() : storeSlice();
    }
    const IntakeCounts &counts() const { return m_counts; }

private:
    static constexpr qsizetype sliceLimit = 20'000; // links
    static constexpr qsizetype sizeLimit = 4 << 20; // characters

    static qsizetype sizeOf(const CapturedLink &link)
    {
        return link.url.size() + link.title.value_or(QString()).size()
            + link.summary.value_or(QString()).size();
    }

    LinkWriter::Result storeSlice()
    {
        const auto writer = m_access.writer();
        if (!writer)
            return Unexpected{writer.error()};
        const auto counts = (*writer)->import(std::exchange(m_slice, {}));
        if (!counts)
            return Unexpected{counts.error()};
        m_counts += *counts;
        m_sliceSize = 0;
        return {};
    }

    SystemClock m_clock;
    WriteAccess m_access{m_clock};
    QList<CapturedLink> m_slice;
    qsizetype m_sliceSize = 0; ///< in characters
    IntakeCounts m_counts;
};

QByteArray text(const IntakeCounts &counts)
{
    const qint64 refused = counts.alreadyStored + counts.excluded + counts.noWebAddress;
    return u"%1 taken, %2 not: %3 already stored, %4 excluded, %5 not web addresses\n"_s
        .arg(counts.taken)
        .arg(refused)
        .arg(counts.alreadyStored)
        .arg(counts.excluded)
        .arg(counts.noWebAddress)
        .toUtf8();
}

QByteArray json(const IntakeCounts &counts)
{
    const QJsonObject object{{u"taken"_s, counts.taken},
                             {u"alreadyStored"_s, counts.alreadyStored},
                             {u"excluded"_s, counts.excluded},
                             {u"noWebAddress"_s, counts.noWebAddress}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact).append('\n');
}

} // namespace

Expected<ImportRequest, QString> parseImportArguments(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.addOption({u"json"_s, {}});
    if (!parser.parse(arguments))
        return Unexpected{parser.errorText()};
    if (parser.positionalArguments().size() != 1)
        return Unexpected{QString(u"import takes one file, or - for standard input"_s)};
    return ImportRequest{parser.positionalArguments().first(), parser.isSet(u"json"_s)};
}

int runImport(const ImportRequest &request)
{
    QFile file(request.input);
    const bool isOpen =
        request.input == u"-" ? file.open(stdin, QFile::ReadOnly) : file.open(QFile::ReadOnly);
    if (!isOpen)
        return fail(request.input + u": " + file.errorString());

    Import import;
    const auto imported = import.run(file);
    const IntakeCounts &counts = import.counts();
    print(request.asJson ? json(counts) : text(counts));
    const int code = finish(counts.taken > 0 ? ExitCode::done : ExitCode::nothing);
    if (!imported)
        return fail(imported.error());
    if (file.error() != QFile::NoError)
        return fail(request.input + u": " + file.errorString());
    return code;
}
