// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"
#include "SecretServiceState.h"
#include "StoreError.h"

#include <QList>
#include <QProcessEnvironment>
#include <QString>

#include <optional>

/// The trays that Strandloom can put its icon into.
enum class TrayKind { statusNotifier, embedding, none };

/// Whether there is a store, or why it cannot be used.
using StoreCondition = Expected<bool, StoreError>;

/// What the machine answered. Absent is what gave no answer in time.
struct CheckUp {
    std::optional<StoreCondition> store;
    QString clipboardMeans; ///< as `ClipboardSource` has it
    QString clipboardLimitation;
    std::optional<TrayKind> tray;
    std::optional<SecretServiceState> secretService;
    bool sendsMail = false; ///< the user wants the daily mail
    bool wantsLogin = false; ///< the user wants the program to start with the session
    bool isLoginItem = false; ///< and it does
    QProcessEnvironment environment;
    QString libraries; ///< with their versions
};

struct Finding {
    QString name;
    bool isWell = false;
    QString text; ///< one or more sentences for the user
};

/// What to tell of each part of the machine, in a fixed order.
QList<Finding> findings(const CheckUp &checkUp);
