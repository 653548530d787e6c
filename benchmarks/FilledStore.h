// SPDX-License-Identifier: MIT
#pragma once

#include "ModelContainer.h"
#include "ModelContext.h"

#include <QTemporaryDir>

const Instant firstCopy{std::chrono::seconds(1'700'000'000)};

/// A store of `rows` links, one copied each second from `firstCopy` on, in the current directory.
/// It goes with the object.
class FilledStore
{
public:
    explicit FilledStore(int rows);

    QString path() const { return m_directory.path(); }

private:
    QTemporaryDir m_directory;
};

/// Ends the program where that fails.
std::unique_ptr<ModelContainer> opened(const QString &folder);
