// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"
#include "Expected.h"
#include "StoreError.h"

#include <QList>
#include <QStringList>

class ModelContext;

/// Why a link is not taken into the store.
enum class Refusal { noWebAddress, excluded, alreadyStored };
/// The refusal as a part of an English sentence.
QString description(Refusal refusal);

/// What became of links.
struct IntakeCounts {
    qint64 taken = 0;
    qint64 alreadyStored = 0;
    qint64 excluded = 0;
    qint64 noWebAddress = 0;

    IntakeCounts &operator+=(const IntakeCounts &other);
    void note(Refusal refusal);
};

/// Takes links into the store that were not copied, by the rules that hold for those that were.
/// Made for one call or a few: it reads the excluded domains once. Main thread only.
class LinkIntake
{
public:
    using Added = Expected<CapturedLink, Refusal>;

    /// `context` outlives this.
    explicit LinkIntake(ModelContext &context)
        : m_context(context)
    {
    }

    /// Takes the address as if it was copied at `now`.
    Expected<Added, StoreError> add(const QString &address, Instant now);
    /// Takes what it may of `links`, all as one transaction. One whose id is taken gets a new one.
    Expected<IntakeCounts, StoreError> import(const QList<CapturedLink> &links);

private:
    struct Choice {
        QList<CapturedLink> accepted;
        IntakeCounts counts;
    };

    Expected<Choice, StoreError> chosen(const QList<CapturedLink> &links);
    Expected<std::optional<Refusal>, StoreError> refusal(const QString &url);
    Expected<void, StoreError> loadExcludedDomains();

    ModelContext &m_context;
    std::optional<QStringList> m_excludedDomains;
};
