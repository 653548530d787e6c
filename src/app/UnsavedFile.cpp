// SPDX-License-Identifier: MIT
#include "UnsavedFile.h"

#include "AtomicFile.h"
#include "LinkStream.h"
#include "ModelContext.h"

#include <QDateTime>
#include <QDir>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{

Expected<void, FileError> write(const QList<CapturedLink> &links, const QString &path)
{
    auto file = AtomicFile::open(path, FileAudience::owner);
    if (!file)
        return Unexpected{file.error()};
    const ByteSink sink = [&file](QByteArrayView bytes) { return file->write(bytes); };
    LinkStream stream(jsonFormat, sink);
    for (const CapturedLink &link : links)
        stream.write(link);
    stream.end(); // `commit` tells of a failure
    return file->commit();
}

void say(const QString &line)
{
    std::fprintf(stderr, "strandloom: %s\n", qPrintable(line));
}

} // namespace

void keepUnsavedLinks(ModelContext &context, const QString &folder)
{
    context.saveUnsaved();
    const auto links = context.unsavedLinks();
    if (!links || links->isEmpty())
        return;
    say(u"%1 links cannot be stored: %2"_s.arg(QString::number(links->size()),
                                               description(*context.unsavedReason())));
    const QString now = QDateTime::currentDateTime().toString(u"yyyy-MM-dd-HHmmss");
    const QString path = folder + u"/unsaved-" + now + u".json";
    QDir().mkpath(folder); // the file's own error tells when that failed
    if (const auto written = write(*links, path); written) {
        say(u"they are in %1, which 'strandloom import' reads"_s.arg(path));
    } else {
        say(description(written.error()));
        for (const CapturedLink &link : *links)
            say(link.url);
    }
}
