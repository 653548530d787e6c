// SPDX-License-Identifier: MIT
#pragma once

#include "SaveDialog.h"

/// The desktop's own file dialog, as the toolkit offers it, on the active window. Never blocks the
/// main loop.
class FileSaveDialog final : public SaveDialog
{
public:
    Task<std::optional<QString>> chooseFile(SaveRequest request) override;
};
