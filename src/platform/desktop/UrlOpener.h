// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Opens web addresses in the user's browser. Main thread only.
class UrlOpener
{
public:
    virtual ~UrlOpener() = default;
    /// Returns at once. False when `url` is no http or https address, which is not opened, or when
    /// there is nothing to open it with.
    virtual bool open(const QString &url) = 0;
};

/// Through the desktop's own choice of browser.
class DesktopUrlOpener final : public UrlOpener
{
public:
    bool open(const QString &url) override;
};
