// SPDX-License-Identifier: MIT
#include "ModelContainer.h"

#include "ModelContext.h"
#include "StoreDatabase.h"

#include <QStandardPaths>

QString ModelContainer::defaultFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u"/strandloom";
}

Expected<std::unique_ptr<ModelContainer>, StoreError>
ModelContainer::open(const QString &folder, Clock &clock, std::chrono::milliseconds patience)
{
    auto lock = StoreLock::take(folder, patience);
    if (!lock)
        return Unexpected{lock.error()};
    auto database = StoreDatabase::open(folder);
    if (!database)
        return Unexpected{database.error()};
    return std::unique_ptr<ModelContainer>(
        new ModelContainer(std::move(*lock), std::move(*database), clock));
}

ModelContainer::ModelContainer(StoreLock lock, std::unique_ptr<StoreDatabase> database,
                               Clock &clock)
    : m_lock(std::move(lock))
    , m_database(std::move(database))
    , m_context(std::make_unique<ModelContext>(*m_database, clock))
{
}

ModelContainer::~ModelContainer() = default;
