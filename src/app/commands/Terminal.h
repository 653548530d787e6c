// SPDX-License-Identifier: MIT
#pragma once

#include "ByteSink.h"
#include "ExitCode.h"
#include "Expected.h"

#include <QStringList>

#include <functional>

class QCommandLineParser;

/// Done, or why not, as a sentence for the user.
using Outcome = Expected<void, QString>;

/// Why a command cannot go on.
struct CommandError {
    ExitCode code = ExitCode::unusable;
    QString reason; ///< a sentence for the user
    QStringList details = {}; ///< lines below it
};

/// Says `reason` on standard error, control characters in it as spaces; returns `code` for the process to end with.
int fail(const QString &reason, ExitCode code = ExitCode::unusable);
/// Says why on standard error; returns the code.
int fail(const CommandError &error);
/// The same for wrong usage.
int refuse(const QString &reason);

/// Parses the arguments of a command that takes options only.
Outcome parseOptions(QCommandLineParser &parser, const QStringList &arguments);

/// `text` without line breaks and other control characters, whatever a page wrote into it.
QString onOneLine(const QString &text);

/// Appends to standard output; false when it takes no more.
bool print(QByteArrayView bytes);
/// What to end with once all is printed: `code`, unless standard output did not take all of it, or
/// `damaged` links had to be left out, which is said.
int finish(ExitCode code, qint64 damaged = 0);

/// Has `write` fill `output`: a file, there whole or not at all, a pipe or a device, or "-" for
/// standard output.
Outcome writeTo(const QString &output, const std::function<Outcome(const ByteSink &)> &write);
