// SPDX-License-Identifier: MIT
#pragma once

#include "StoreDatabase.h"

/// What `read` makes of the store in `folder`, whether the program runs or not; absent when there
/// is none. `read` may be called twice, and throws what SQLiteCpp throws. Any thread.
template <typename Read>
auto readStore(const QString &folder, Read read)
    -> Expected<std::optional<std::invoke_result_t<Read, StoreDatabase &>>, StoreError>
{
    using Result = std::optional<std::invoke_result_t<Read, StoreDatabase &>>;
    const QString path = StoreDatabase::pathIn(folder);
    const auto isStored = isStoreFileThere(path);
    if (!isStored)
        return Unexpected{isStored.error()};
    if (!*isStored)
        return Result();
    const auto readOnce = [&]() -> Expected<Result, StoreError> {
        const auto store = StoreDatabase::openReadOnly(folder);
        if (!store)
            return Unexpected{store.error()};
        return (*store)->attempt([&] { return Result(read(**store)); });
    };

    const auto hadLog = isStoreFileThere(StoreDatabase::logOf(path));
    auto result = readOnce();
    const auto hasLog = isStoreFileThere(StoreDatabase::logOf(path));
    if (!hadLog || !hasLog)
        return Unexpected{hadLog ? hasLog.error() : hadLog.error()};
    return *hasLog == *hadLog ? result : readOnce(); // the program started or ended meanwhile
}
