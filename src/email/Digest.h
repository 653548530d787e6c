// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"

#include <QList>
#include <QTimeZone>

/// What the digest depends on besides the links.
struct DigestContext {
    Instant now;
    QString locale; ///< of the dates, such as "de_DE"
    QString productSite; ///< the address that the footer links to
    std::optional<QTimeZone> zone = std::nullopt; ///< absent: the system's
};

/// The mail's body: one HTML document with a card per link, newest first. Texts are escaped, but
/// not the address inside `href`, which is as it was copied.
QString composeDigestHTML(const QList<CapturedLink> &links, const DigestContext &context);
/// The mail's subject, with today's date.
QString digestSubject(const DigestContext &context);
/// `text` with entities for `&`, `<`, `>` and `"`; apostrophes stay.
QString escapeHTML(const QString &text);
