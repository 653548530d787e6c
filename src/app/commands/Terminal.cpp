// SPDX-License-Identifier: MIT
#include "commands/Terminal.h"

#include "AtomicFile.h"

#include <QCommandLineParser>

#include <cerrno>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{

int outputError = 0; ///< of errno, the first of standard output

Outcome flushed()
{
    if (std::fflush(stdout) != 0 && outputError == 0)
        outputError = errno;
    if (outputError == 0)
        return {};
    return Unexpected{QString(u"standard output: "_s + qt_error_string(outputError))};
}

Outcome writeFile(const QString &path, const std::function<Outcome(const ByteSink &)> &write)
{
    auto file = AtomicFile::open(path);
    if (!file)
        return Unexpected{description(file.error())};
    bool isWriting = true;
    const Outcome written =
        write([&](QByteArrayView bytes) { return isWriting = file->write(bytes); });
    if (!written && isWriting)
        return written;
    const auto committed = file->commit();
    return committed ? Outcome() : Unexpected{description(committed.error())};
}

} // namespace

int fail(const QString &reason, ExitCode code)
{
    std::fprintf(stderr, "strandloom: %s\n", qPrintable(reason));
    return int(code);
}

int refuse(const QString &reason)
{
    const int code = fail(reason);
    std::fputs("Try 'strandloom --help'.\n", stderr);
    return code;
}

Outcome parseOptions(QCommandLineParser &parser, const QStringList &arguments)
{
    if (!parser.parse(arguments))
        return Unexpected{parser.errorText()};
    if (!parser.positionalArguments().isEmpty())
        return Unexpected{u"unexpected argument '%1'"_s.arg(parser.positionalArguments().first())};
    return {};
}

QString onOneLine(QString text)
{
    for (QChar &character : text) {
        if (character.category() == QChar::Other_Control)
            character = u' ';
    }
    return text.simplified();
}

bool print(QByteArrayView bytes)
{
    const auto size = size_t(bytes.size());
    if (outputError == 0 && std::fwrite(bytes.data(), 1, size, stdout) != size)
        outputError = errno;
    return outputError == 0;
}

int finish(ExitCode code)
{
    const Outcome written = flushed();
    return written ? int(code) : fail(written.error());
}

Outcome writeTo(const QString &output, const std::function<Outcome(const ByteSink &)> &write)
{
    if (output != u"-")
        return writeFile(output, write);
    const Outcome written = write(print);
    const Outcome taken = flushed(); // the cause, where that went wrong
    return taken ? written : taken;
}
