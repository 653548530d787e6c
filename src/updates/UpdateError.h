// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QString>

/// Why a check for updates told nothing.
struct UpdateError {
    Q_DECLARE_TR_FUNCTIONS(UpdateError)
public:
    enum class Kind {
        notConfigured,
        unreachable,
        missing, ///< nothing is at the address
        refused, ///< by our own rules: a redirect to http, or into the user's own network
        oversized,
        notSigned,
        unknownKey,
        wrongSignature,
        notJson,
        incomplete, ///< a field is missing or makes no sense
        expired,
        replayed, ///< older than what was seen before
    };
    Kind kind;
    QString detail = {}; ///< with `unreachable` the reason, with `incomplete` the field
};
/// The error as one sentence for people, with its full stop.
QString description(const UpdateError &error);
