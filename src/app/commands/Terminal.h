// SPDX-License-Identifier: MIT
#pragma once

#include "ExitCode.h"
#include "Expected.h"

#include <QByteArrayView>
#include <QStringList>

class QCommandLineParser;

/// Says `reason` on standard error; returns `code` for the process to end with.
int fail(const QString &reason, ExitCode code = ExitCode::unusable);
/// The same for wrong usage.
int refuse(const QString &reason);

/// Parses the arguments of a command that takes options only. The error is a sentence for the
/// user.
Expected<void, QString> parseOptions(QCommandLineParser &parser, const QStringList &arguments);

/// Appends to standard output; false when it takes no more.
bool print(QByteArrayView bytes);
/// What to end with once all is printed: `code`, unless standard output did not take all of it.
int finish(ExitCode code);
