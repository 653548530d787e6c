// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"
#include "TitleFetcher.h"
#include "async/Scope.h"

#include <QDBusAbstractAdaptor>
#include <QStringList>

#include <functional>

class Clock;
class HttpClient;
class ModelContext;
class QDBusMessage;
class QThreadPool;
struct StoreError;

/// How command lines have the running program change its links. Every call is short: many links
/// come in many calls. Main thread only.
class LinksAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "app.strandloom.Links")
public:
    static constexpr QLatin1StringView interfaceName{"app.strandloom.Links"};
    /// What a call fails with when the store does, or is given what no command line sends.
    static constexpr QLatin1StringView storeError{"app.strandloom.Error.Store"};
    static constexpr QLatin1StringView invalidError{"app.strandloom.Error.Invalid"};
    /// How many links one call may be about.
    static constexpr int linksPerCall = 500;

    struct Parts {
        ModelContext &modelContext;
        HttpClient &http;
        QThreadPool &pages;
        Clock &clock;
    };
    /// All of `parts` outlives the adaptor. `parent` is the object that is on the bus.
    LinksAdaptor(const Parts &parts, QObject *parent);

public Q_SLOTS: // NOLINTBEGIN(readability-identifier-naming): the names on the bus
    /// Why `address` was not taken; empty when it was.
    QString Add(const QString &address, const QDBusMessage &call);
    void SetTitle(const QString &id, const QString &title);
    void Remove(const QStringList &ids, const QDBusMessage &call);
    void HideExported(const QStringList &ids, const QDBusMessage &call);
    /// `links` is a JSON array as `strandloom list --json` prints it; how many were taken.
    qlonglong Import(const QByteArray &links, const QDBusMessage &call, qlonglong &alreadyStored,
                     qlonglong &excluded, qlonglong &noWebAddress);
    // NOLINTEND(readability-identifier-naming)

private:
    using Change = std::function<Expected<void, StoreError>(const QList<LinkId> &)>;

    static void change(const QStringList &ids, const QDBusMessage &call, const Change &apply);

    Parts m_parts;
    TitleFetcher m_titles;
    Scope m_tasks;
};
