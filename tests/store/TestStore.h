// SPDX-License-Identifier: MIT
#pragma once

#include "FakeClock.h"
#include "ModelContainer.h"
#include "ModelContext.h"

#include <QTemporaryDir>

#include <functional>
#include <sys/resource.h>

/// A link copied `seconds` after the fake clock's start.
CapturedLink makeLink(const QString &url, int seconds = 0);
QStringList urlsOf(const QList<CapturedLink> &links);
/// Every visible link in the order of insertion.
QList<CapturedLink> inStoreOrder(const ModelContext &context);

/// A real store file in a folder of its own.
struct TestStore {
    QTemporaryDir temporary;
    QString folder = temporary.filePath(QStringLiteral("store"));
    FakeClock clock;
    std::unique_ptr<ModelContainer> container;

    TestStore() { open(); }
    void open();
    void close() { container.reset(); }
    void reopen();
    ModelContext &context() const { return container->mainContext(); }
    CapturedLink add(const QString &url, int seconds = 0) const;
    /// Every visible link, read page by page.
    QStringList visible(int pageSize = 100) const;
};

/// While it lives, nothing can be written behind a file's first byte.
class FullDisk
{
public:
    FullDisk();
    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;
    ~FullDisk();

private:
    rlimit m_before = {};
};

/// Runs `work` in a child process that is then killed without any clean-up.
void runAndKill(const std::function<void()> &work);
/// What `work` returns, from 0 to 255, in a child process of a user whom permissions bind.
int runUnprivileged(const std::function<int()> &work);
