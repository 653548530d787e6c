// SPDX-License-Identifier: MIT
#pragma once

#include "async/Task.h"

#include <QString>

#include <optional>

/// What a file to save holds: `plainText` is text/plain, `text` any kind of text.
enum class ContentType { plainText, text, pdf };

struct SaveRequest {
    QString suggestedName; ///< with its extension, which the dialog shows
    ContentType contentType = ContentType::plainText;
};

/// Asks the user for the place of a new file. Main thread only.
class SaveDialog
{
public:
    virtual ~SaveDialog() = default;
    /// Brings the program to the front with a dialog in which folders can be made, too. The path
    /// that was confirmed; absent when the user cancelled.
    virtual Task<std::optional<QString>> chooseFile(SaveRequest request) = 0;
};
