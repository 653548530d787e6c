// SPDX-License-Identifier: MIT
#pragma once

#include "async/Scope.h"
#include "settings/SettingsParts.h"

#include <QObject>

#include <optional>

/// The state and the actions of the e-mail tab, besides its preferences. Main thread only.
class EmailSettingsViewModel : public QObject
{
    Q_OBJECT
public:
    explicit EmailSettingsViewModel(const SettingsParts &parts, QObject *parent = nullptr);

    bool isConfigured() const;
    QString senderText() const; ///< "Sending from: " and the sender
    QString countText() const; ///< how many links a digest would hold now
    /// What is wrong with the last configuration that was to be saved; absent when nothing is.
    std::optional<QString> validationError() const;

    bool isSending() const { return m_isSending; }
    /// Why the last send from here failed; absent when it did not.
    std::optional<QString> sendError() const { return m_sendError; }
    /// The last send from here went well.
    bool sendSuccess() const { return m_sendSuccess; }

    /// Mails the visible links, unless a send from here is under way.
    void sendNow();
    /// Ends with `saved`, or with a `validationError`.
    void save(const QString &apiKey, const QString &fromEmail);
    void removeConfiguration();
    /// Looks into the keyring again; to be called when the tab is shown.
    void refresh();

Q_SIGNALS:
    void changed();
    void saved();

private:
    Task<> send();
    Task<std::optional<QString>> deliver();
    Task<> saveConfiguration(QString apiKey, QString fromEmail);

    const SettingsParts &m_parts;
    bool m_isSending = false;
    std::optional<QString> m_sendError;
    bool m_sendSuccess = false;
    Scope m_tasks;
};
