// SPDX-License-Identifier: MIT
#pragma once

#include "CallQueue.h"
#include "CapturedLink.h"
#include "Expected.h"
#include "TitleFetcher.h"
#include "async/Scope.h"

#include <QDBusAbstractAdaptor>
#include <QStringList>

class Clock;
class HttpClient;
class ModelContext;
class QThreadPool;
struct StoreError;

/// How command lines have the running program change its links. What it is given is bounded, and
/// so is the time that the main loop is held. Main thread only.
class LinksAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "app.strandloom.Links")
public:
    static constexpr QLatin1StringView interfaceName{"app.strandloom.Links"};
    /// What a call fails with when the store does.
    static constexpr QLatin1StringView storeError{"app.strandloom.Error.Store"};
    /// What a call fails with that has too much in it, or not what it is to have.
    static constexpr QLatin1StringView invalidError{"app.strandloom.Error.Invalid"};
    /// How many links one call may be about, and how large the array of an import may be.
    static constexpr int linksPerCall = 1000;
    static constexpr qsizetype bytesPerCall = 4 << 20;

    struct Dependencies {
        ModelContext &modelContext;
        HttpClient &http;
        QThreadPool &pages;
        Clock &clock;
    };
    /// All of `dependencies` outlives the adaptor. `parent` is the object that is on the bus.
    LinksAdaptor(const Dependencies &dependencies, QObject *parent);

public Q_SLOTS: // NOLINTBEGIN(readability-identifier-naming): the names on the bus
    /// Why `address` was not taken; empty when it was.
    QString Add(const QString &address, const QDBusMessage &call);
    void SetTitle(const QString &id, const QString &title, const QDBusMessage &call);
    void Remove(const QStringList &ids, const QDBusMessage &call);
    void HideExported(const QStringList &ids, const QDBusMessage &call);
    /// `links` is a JSON array as `strandloom list --json` prints it; how many were taken.
    qlonglong Import(const QByteArray &links, const QDBusMessage &call, qlonglong &alreadyStored,
                     qlonglong &excluded, qlonglong &noWebAddress);
    // NOLINTEND(readability-identifier-naming)

private:
    using Answer = CallQueue::Answer;
    using Change = Expected<void, StoreError> (ModelContext::*)(const QList<LinkId> &);

    Task<Answer> add(QString address);
    Task<Answer> setTitle(LinkId id, QString title);
    Task<Answer> change(QList<LinkId> ids, Change apply);
    Answer changed(const QList<LinkId> &ids, Change apply);
    Task<Answer> import(QByteArray json);
    void queueChange(const QStringList &ids, const QDBusMessage &call, Change apply);

    Dependencies m_dependencies;
    TitleFetcher m_titles;
    CallQueue m_calls;
    Scope m_tasks;
};
