// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"
#include "StoreError.h"

#include <QString>

#include <chrono>
#include <utility>

/// The right to write to the store in a folder, held by one process at a time. The system takes it
/// back when the process ends, however it ends.
class StoreLock
{
public:
    /// Makes the folder where there is none. Waits up to `patience` for another process to end or
    /// to let go.
    static Expected<StoreLock, StoreError> take(const QString &folder,
                                                std::chrono::milliseconds patience);

    StoreLock(StoreLock &&other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1))
    {
    }
    StoreLock &operator=(StoreLock &&) = delete;
    ~StoreLock();

private:
    explicit StoreLock(int descriptor)
        : m_descriptor(descriptor)
    {
    }

    int m_descriptor;
};
