// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Opens web addresses in the user's browser. Main thread only.
class UrlOpener
{
public:
    virtual ~UrlOpener() = default;
    /// Returns at once. Does nothing when `url` is no http or https address.
    virtual void open(const QString &url) = 0;
};

/// Through the desktop's own choice of browser.
class DesktopUrlOpener final : public UrlOpener
{
public:
    void open(const QString &url) override;
};
