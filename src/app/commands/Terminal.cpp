// SPDX-License-Identifier: MIT
#include "commands/Terminal.h"

#include <QCommandLineParser>

#include <cstdio>

using namespace Qt::StringLiterals;

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

Expected<void, QString> parseOptions(QCommandLineParser &parser, const QStringList &arguments)
{
    if (!parser.parse(arguments))
        return Unexpected{parser.errorText()};
    if (!parser.positionalArguments().isEmpty())
        return Unexpected{u"unexpected argument '%1'"_s.arg(parser.positionalArguments().first())};
    return {};
}

bool print(QByteArrayView bytes)
{
    return std::fwrite(bytes.data(), 1, size_t(bytes.size()), stdout) == size_t(bytes.size());
}

int finish(ExitCode code)
{
    const bool isWritten = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    return isWritten ? int(code) : fail(u"standard output: "_s + qt_error_string());
}
