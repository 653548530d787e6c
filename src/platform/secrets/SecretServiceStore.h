// SPDX-License-Identifier: MIT
#pragma once

#include "SecretStore.h"

#include <QThreadPool>

#include <functional>
#include <memory>

/// Secrets in the desktop's secret service (`org.freedesktop.secrets`), as text items that carry
/// the attributes "service" and "account". Works on a thread of its own and gives up after five
/// seconds without an answer, though never while the user is being asked.
class SecretServiceStore final : public SecretStore
{
    Q_OBJECT
public:
    explicit SecretServiceStore(const QString &serviceName);
    ~SecretServiceStore() override;

    Task<ReadResult> read(QStringList accounts, UnlockPrompt prompt) override;
    Task<ReadResult> find(QStringList accounts) override;
    Task<Result> write(QList<Secret> secrets) override;
    Task<Result> removeAll() override;

private Q_SLOTS:
    void noteOwner(const QString &name, const QString &before, const QString &now);

private:
    void watch();

    QByteArray m_serviceName;
    std::unique_ptr<QThreadPool> m_thread;
};
