// SPDX-License-Identifier: MIT
#pragma once

#include "ApplicationAction.h"
#include "Expected.h"

#include <QObject>
#include <QVariantMap>

#include <memory>
#include <vector>

class UnixSignal;

/// Sees to it that the user runs the program once. The first start owns the name "app.strandloom"
/// on the session bus, or a lock file where there is no bus, and hears of further starts. Main
/// thread only.
class SingleInstance : public QObject
{
    Q_OBJECT
public:
    enum class Role {
        first, ///< this process is the program
        second, ///< another one is, and was asked
    };

    /// The program on the session bus.
    static constexpr QLatin1StringView serviceName{"app.strandloom"};
    static constexpr QLatin1StringView objectPath{"/app/strandloom"};

    explicit SingleInstance(QObject *parent = nullptr);
    ~SingleInstance() override;

    /// The error, that another instance runs and does not answer, is a sentence for the user.
    using Claim = Expected<Role, QString>;

    /// Becomes the first instance, or asks the running one for `action`, handing on what
    /// `launchData()` gave.
    Claim claim(ApplicationAction action, const QVariantMap &launchData);

    /// Asks the running instance for `action`, and waits for it to end when that is `quit`. The
    /// error, that there is none or that it does not answer, is a sentence for the user. For a
    /// process that is not going to be the program.
    static Expected<void, QString> tell(ApplicationAction action);

Q_SIGNALS:
    /// Somebody started the program again, or chose it in a launcher.
    void requested(ApplicationAction action);

private:
    Claim claimOnBus(ApplicationAction action, const QVariantMap &launchData);
    Claim claimLockFile(ApplicationAction action);

    std::vector<std::unique_ptr<UnixSignal>> m_calls; ///< of further starts where there is no bus
    int m_lockFile = -1; ///< a descriptor, which holds the lock; negative where there is a bus
};
