// SPDX-License-Identifier: MIT
#include "ModelContainer.h"

#include "ModelContext.h"
#include "StoreDatabase.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace
{

/// The user's alone from the first moment on.
bool makeFolder(const QString &folder)
{
    constexpr auto ownerOnly =
        QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;
    if (QFileInfo(folder).isDir())
        return true;
    return QDir().mkpath(QFileInfo(folder).path()) && QDir().mkdir(folder, ownerOnly);
}

} // namespace

QString ModelContainer::defaultFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u"/strandloom";
}

Expected<std::unique_ptr<ModelContainer>, StoreError>
ModelContainer::open(const QString &folder, Clock &clock, std::chrono::milliseconds patience)
{
    if (!makeFolder(folder))
        return Unexpected{
            StoreError{StoreError::Kind::cannotOpen, QString(folder + u": " + qt_error_string())}};
    auto lock = StoreLock::take(folder, patience);
    if (!lock)
        return Unexpected{lock.error()};
    auto database = StoreDatabase::open(folder);
    if (!database)
        return Unexpected{database.error()};
    std::unique_ptr<ModelContainer> container(
        new ModelContainer(std::move(*lock), std::move(*database), clock));
    if (const auto counted = container->m_context->takeCounts(); !counted)
        return Unexpected{counted.error()};
    return container;
}

ModelContainer::ModelContainer(StoreLock lock, std::unique_ptr<StoreDatabase> database,
                               Clock &clock)
    : m_lock(std::move(lock))
    , m_database(std::move(database))
    , m_context(std::make_unique<ModelContext>(*m_database, clock))
{
}

ModelContainer::~ModelContainer() = default;
