// SPDX-License-Identifier: MIT
#include "commands/Terminal.h"

#include "AtomicFile.h"
#include "Printable.h"

#include <QCommandLineParser>
#include <QFile>

#include <cerrno>
#include <cstdio>
#include <sys/stat.h>

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

bool isStandardOutput(const QString &output)
{
    return output == u"-" || output == u"/dev/stdout" || output == u"/dev/fd/1";
}

/// Whether `path` is there and takes what is written piece by piece: a pipe, a terminal.
bool isStream(const QString &path)
{
    struct stat found = {};
    return stat(QFile::encodeName(path).constData(), &found) == 0
        && (S_ISFIFO(found.st_mode) || S_ISCHR(found.st_mode));
}

Outcome writeStream(const QString &path, const std::function<Outcome(const ByteSink &)> &write)
{
    QFile stream(path);
    const auto failure = [&] { return Unexpected{QString(path + u": " + stream.errorString())}; };
    if (!stream.open(QFile::WriteOnly | QFile::Unbuffered))
        return failure();
    bool isWriting = true;
    const Outcome written = write([&](QByteArrayView bytes) {
        isWriting = isWriting && stream.write(bytes.data(), bytes.size()) == bytes.size();
        return isWriting;
    });
    return isWriting ? written : failure();
}

} // namespace

int fail(const QString &reason, ExitCode code)
{
    std::fprintf(stderr, "strandloom: %s\n", qPrintable(printable(reason)));
    return int(code);
}

int fail(const CommandError &error)
{
    fail(error.reason, error.code);
    for (const QString &detail : error.details)
        std::fprintf(stderr, "  %s\n", qPrintable(printable(detail)));
    return int(error.code);
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

QString onOneLine(const QString &text)
{
    return printable(text).simplified();
}

bool print(QByteArrayView bytes)
{
    const auto size = size_t(bytes.size());
    if (outputError == 0 && std::fwrite(bytes.data(), 1, size, stdout) != size)
        outputError = errno;
    return outputError == 0;
}

int finish(ExitCode code, qint64 damaged)
{
    const Outcome written = flushed();
    if (!written)
        return fail(written.error());
    if (damaged > 0)
        return fail(u"%1 damaged links are left out"_s.arg(damaged), ExitCode::nothing);
    return int(code);
}

Outcome writeTo(const QString &output, const std::function<Outcome(const ByteSink &)> &write)
{
    if (!isStandardOutput(output))
        return isStream(output) ? writeStream(output, write) : writeFile(output, write);
    const Outcome written = write(print);
    const Outcome taken = flushed(); // the cause, where that went wrong
    return taken ? written : taken;
}
