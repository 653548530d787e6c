// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"
#include "StoreError.h"
#include "StoreLock.h"

#include <QString>

#include <chrono>
#include <memory>

class Clock;
class ModelContext;
class StoreDatabase;

/// The one store with its schema (version 1.0.0), opened for writing. Writers of other processes
/// are kept out for as long as it lives.
class ModelContainer
{
public:
    /// `$XDG_DATA_HOME/strandloom`
    static QString defaultFolder();

    /// Opens the store in `folder`, or makes a new one where there is none. What is damaged,
    /// foreign or newer is left as it is. Waits up to `patience` while another process writes.
    /// `clock` outlives the container.
    static Expected<std::unique_ptr<ModelContainer>, StoreError>
    open(const QString &folder, Clock &clock, std::chrono::milliseconds patience = {});

    ~ModelContainer();
    /// The one context, alive as long as the container.
    ModelContext &mainContext() { return *m_context; }

private:
    ModelContainer(StoreLock lock, std::unique_ptr<StoreDatabase> database, Clock &clock);

    StoreLock m_lock;
    std::unique_ptr<StoreDatabase> m_database;
    std::unique_ptr<ModelContext> m_context;
};
