// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QString>

#include <memory>

class QLockFile;
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
        second, ///< another one is, and was told to show itself
    };

    /// The program on the session bus.
    static constexpr QLatin1StringView serviceName{"app.strandloom"};
    static constexpr QLatin1StringView objectPath{"/app/strandloom"};

    explicit SingleInstance(QObject *parent = nullptr);
    ~SingleInstance() override;

    /// Becomes the first instance, or asks the running one to show itself.
    Role claim();

Q_SIGNALS:
    /// Somebody started the program again, or chose it in a launcher.
    void activated();

private:
    Role claimOnBus();
    Role claimLockFile();

    std::unique_ptr<QLockFile> m_lockFile;
    std::unique_ptr<UnixSignal> m_activation; ///< how a further start calls where there is no bus
};
