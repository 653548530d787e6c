// SPDX-License-Identifier: MIT
#pragma once

#include "UrlOpener.h"

#include <QStringList>

/// Keeps what it was to open.
class FakeUrlOpener final : public UrlOpener
{
public:
    bool open(const QString &url) override
    {
        opened.append(url);
        return true;
    }

    QStringList opened;
};
