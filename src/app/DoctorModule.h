// SPDX-License-Identifier: MIT
#pragma once

#include "Module.h"

#include <QStringList>

/// What the module offers that examines the machine, by the libraries of the desktop.
struct DoctorModule : ModuleOffer {
    static constexpr auto name = "doctor";

    /// `arguments` begin with the command's name; the result is the exit code.
    int (*run)(const QStringList &arguments);
};
