// SPDX-License-Identifier: MIT
#pragma once

#include "ByteSink.h"
#include "CapturedLink.h"

/// A format in which links are written one by one, so that any number of them needs little memory.
struct LinkFormat {
    QByteArrayView head;
    QByteArray (*link)(const CapturedLink &link);
    QByteArrayView separator; ///< between two links
    QByteArrayView tail;
};

/// One array of the objects of `jsonOf`, an object a line.
extern const LinkFormat jsonFormat;
/// Bookmarks as browsers write and read them, with titles and dates.
extern const LinkFormat netscapeFormat;

/// Writes links in a format, in parts of a useful size.
class LinkStream
{
public:
    /// Both outlive the stream.
    LinkStream(const LinkFormat &format, const ByteSink &sink);

    /// False when no more is wanted.
    bool write(const CapturedLink &link);
    /// To be called once, after the last link.
    bool end();

private:
    const LinkFormat &m_format;
    const ByteSink &m_sink;
    QByteArrayView m_separator; ///< before the next link
    QByteArray m_part;
};
