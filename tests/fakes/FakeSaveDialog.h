// SPDX-License-Identifier: MIT
#pragma once

#include "SaveDialog.h"
#include "async/YieldToLoop.h"

#include <QList>

#include <functional>

/// A save dialog whose user answers one loop turn later.
class FakeSaveDialog final : public SaveDialog
{
public:
    std::optional<QString> answer; ///< the path to confirm; absent: cancel
    std::function<void()> meanwhile = [] {}; ///< happens while the dialog is open
    QList<SaveRequest> requests;

    Task<std::optional<QString>> chooseFile(SaveRequest request) override
    {
        requests.append(request);
        YieldToLoop yield;
        co_await yield;
        meanwhile();
        co_return answer;
    }
};
