// SPDX-License-Identifier: MIT
#pragma once

#include "Clock.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

/// What was read from one web page. A present but empty text is not an absent one.
struct EvidencePacket {
    /// A packet without evidence: `domain` is the host of `url` as written, empty when it has none.
    EvidencePacket(const QString &url, Instant now);

    QString url;
    QString domain;
    Instant fetchedAt;
    std::optional<QString> title;
    std::optional<QString> metaDescription;
    std::optional<QString> siteName;
    std::optional<QString> pageType; ///< the page's own og:type, or product, article, webpage
    std::optional<QString> ogTitle; ///< else the Twitter title
    std::optional<QString> ogDescription; ///< else the Twitter description
    std::optional<QString> ogType;
    QStringList headings;
    QStringList navLabels;
    QStringList ctaButtons;
    QStringList pricingText;
    QString extractedText;

    bool operator==(const EvidencePacket &) const = default;

    /// An object with the fields' names as keys, in their order; absent texts are left out and
    /// `fetchedAt` is in seconds since 1970.
    QByteArray toJson() const;
    /// Absent when `json` is no object or a field that is not optional is missing or of another
    /// type. Unknown keys are ignored.
    static std::optional<EvidencePacket> fromJson(const QByteArray &json);
};
