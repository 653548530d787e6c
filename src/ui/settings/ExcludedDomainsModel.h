// SPDX-License-Identifier: MIT
#pragma once

#include "ExcludedDomain.h"

#include <QList>
#include <QObject>

#include <optional>

class ModelContext;

/// The domain that the user means by what was typed or pasted: a name or a whole address. Absent
/// when nothing is left of it.
std::optional<QString> domainFrom(const QString &typed);

/// The list of excluded domains, as both settings screens edit it. Main thread only.
class ExcludedDomainsModel : public QObject
{
    Q_OBJECT
public:
    /// Both outlive the model.
    ExcludedDomainsModel(ModelContext &modelContext, Clock &clock, QObject *parent = nullptr);

    /// In the order in which they were added; none when they cannot be read.
    QList<ExcludedDomain> domains() const;
    /// Whether something was added. A domain may be listed twice.
    bool add(const QString &typed);
    void remove(const QUuid &id);

Q_SIGNALS:
    void changed();

private:
    ModelContext &m_modelContext;
    Clock &m_clock;
};
