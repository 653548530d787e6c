// SPDX-License-Identifier: MIT
#pragma once

#include "ApplicationAction.h"

#include <QDBusAbstractAdaptor>
#include <QStringList>
#include <QVariantMap>

#include <functional>

class QDBusMessage;

/// The D-Bus side of the running program: how launchers and further starts reach it.
class ApplicationAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
public:
    using Perform = std::function<void(ApplicationAction)>;

    /// A window that is activated within `perform` may come to the front.
    ApplicationAdaptor(QObject *parent, Perform perform)
        : QDBusAbstractAdaptor(parent)
        , m_perform(std::move(perform))
    {
    }

public Q_SLOTS:
    // NOLINTBEGIN(readability-identifier-naming): the interface's names
    void Activate(const QVariantMap &platformData);
    /// The program opens no files: the same as `Activate`.
    void Open(const QStringList &uris, const QVariantMap &platformData);
    void ActivateAction(const QString &name, const QVariantList &parameter,
                        const QVariantMap &platformData, const QDBusMessage &call);
    // NOLINTEND(readability-identifier-naming)

private:
    void request(ApplicationAction action, const QVariantMap &platformData);

    Perform m_perform; // no signal, which would be sent to the bus as well
};

/// What the launcher of this process left in its environment so that a window may come to the
/// front. To be taken before the `QApplication` is made, which uses it up.
QVariantMap launchData();
