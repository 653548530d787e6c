// SPDX-License-Identifier: MIT
#pragma once

#include "async/Scope.h"

#include <QObject>

#include <optional>

class ManualSend;
class ModelContext;
class ResendKeyService;

/// The state and the actions of the e-mail tab, besides its preferences. Main thread only.
class EmailSettingsViewModel : public QObject
{
    Q_OBJECT
public:
    /// All of it outlives the model.
    EmailSettingsViewModel(ModelContext &context, ResendKeyService &keys, ManualSend &manualSend,
                           QObject *parent = nullptr);

    bool isConfigured() const;
    QString senderText() const; ///< "Sending from: " and the sender
    QString countText() const; ///< how many links a digest would hold now
    /// What is wrong with the last configuration that was to be saved; absent when nothing is.
    std::optional<QString> validationError() const;

    /// Whether a mail is under way.
    bool isSending() const;
    /// Why the user's last send failed; absent when it did not, or when that has been seen.
    std::optional<QString> sendError() const;
    /// The user's last send went well, and nobody has seen that yet.
    bool sendSuccess() const;

    /// Mails the visible links, unless a mail is under way.
    void sendNow();
    /// The screen is left: the outcome that it showed has been seen.
    void leave();
    /// Ends with `saved`, or with a `validationError`.
    void save(const QString &apiKey, const QString &fromEmail);
    void removeConfiguration();
    /// Looks into the keyring again; to be called when the tab is shown.
    void refresh();

Q_SIGNALS:
    void changed();
    void saved();

private:
    Task<> saveConfiguration(QString apiKey, QString fromEmail);

    ModelContext &m_context;
    ResendKeyService &m_keys;
    ManualSend &m_manualSend;
    Scope m_tasks;
};
