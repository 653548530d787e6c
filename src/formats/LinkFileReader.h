// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"

#include <QByteArray>

class QIODevice;

/// What stands at one place of a file of links.
struct LinkFileEntry {
    std::optional<CapturedLink> link; ///< absent: no web address, or damaged
};

/// Reads links one by one from what another program or this one wrote: bookmarks in the Netscape
/// format, the JSON array of an export, or a web address a line. Needs little memory whatever
/// comes.
class LinkFileReader
{
public:
    /// `device` is open for reading and outlives the reader. Links without a date count as copied
    /// at `now`, in their order.
    LinkFileReader(QIODevice &device, Instant now);

    /// Absent at the end, and when the device fails. A title or summary that is too long is left
    /// out.
    std::optional<LinkFileEntry> next();

private:
    enum class Format { lines, bookmarks, json };
    struct Piece {
        QByteArray bytes;
        bool isTooLong = false; ///< then only the beginning is there
        bool isEnded = false; ///< by what it was to end with
    };

    std::optional<LinkFileEntry> nextAsRead();
    bool fill();
    bool skipSpace();
    std::optional<Piece> pieceUntil(char end);
    std::optional<LinkFileEntry> nextLine();
    std::optional<LinkFileEntry> nextBookmark();
    std::optional<LinkFileEntry> nextObject();
    QByteArray title();
    LinkFileEntry bookmarkOf(const Piece &tag, const QByteArray &title);
    Instant nextMoment() { return m_now += Instant::duration(1); }

    QIODevice &m_device;
    Instant m_now;
    QByteArray m_buffer;
    qsizetype m_position = 0; ///< in `m_buffer`
    std::optional<Format> m_format; ///< known once something was read
    std::optional<Piece> m_tag; ///< was read already, behind a title
};
