#pragma once

#include "Expected.h"
#include "StoreError.h"

#include <QString>

#include <memory>

class ModelContext;

/// The one store file with its schema (version 1.0.0), opened for writing. Writers of other
/// processes are kept out by a lock for as long as it lives.
class ModelContainer
{
public:
    /// `$XDG_DATA_HOME/strandloom`
    static QString defaultFolder();

    /// Opens the store in `folder`, or makes a new one where there is none. What is damaged,
    /// foreign or newer is left as it is.
    static Expected<std::unique_ptr<ModelContainer>, StoreError> open(const QString &folder);

    ~ModelContainer();
    /// The one context, alive as long as the container.
    ModelContext &mainContext();

private:
    ModelContainer();
};
