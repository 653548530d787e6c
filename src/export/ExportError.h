// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Why there is no file.
struct ExportError {
    enum class Kind {
        cannotRead, ///< the store
        cannotWrite, ///< the file
        noFont, ///< a PDF needs at least one
        cannotDraw, ///< anything else that hinders a PDF
        notLoaded, ///< the part of the program that draws PDFs
        stopped, ///< the program ends
    };
    Kind kind = Kind::cannotWrite;
    QString detail = {}; ///< the cause in its own words, where there is one
};

/// The error as one English sentence without a full stop.
QString description(const ExportError &error);
