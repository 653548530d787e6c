// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"

#include <QStringList>

/// What `strandloom doctor` was asked for.
struct DoctorRequest {
    bool asJson = false;
};

/// `arguments` begin with the command's name. The error is a sentence for the user.
Expected<DoctorRequest, QString> parseDoctorArguments(const QStringList &arguments);

/// Prints what works here and what does not, within a few seconds whatever hangs, and returns the
/// exit code. Changes nothing.
int runDoctor(const DoctorRequest &request);
