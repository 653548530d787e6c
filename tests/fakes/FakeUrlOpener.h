// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/UrlOpener.h"

#include <QStringList>

/// Keeps what it was to open.
class FakeUrlOpener final : public UrlOpener
{
public:
    void open(const QString &url) override { opened.append(url); }

    QStringList opened;
};
