// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"
#include "async/Scope.h"

#include <QObject>

#include <optional>

class EmailService;
class ModelContext;
class Preferences;

/// The send that the user asks for: from the press of the button until its outcome has been seen,
/// which may be on a later screen. Records nothing and hides no links. Main thread only.
class ManualSend : public QObject
{
    Q_OBJECT
public:
    /// What went wrong, in words for people, if anything did.
    using Outcome = Expected<void, QString>;
    /// All of it outlives the send.
    struct Dependencies {
        EmailService &service;
        const ModelContext &modelContext;
        const Preferences &preferences;
    };

    explicit ManualSend(const Dependencies &dependencies, QObject *parent = nullptr);

    /// Whether any mail is under way, be it a scheduled one.
    bool isSending() const;
    /// How the last send ended; absent once it was seen, and while one is under way.
    const std::optional<Outcome> &outcome() const { return m_outcome; }

    /// Mails the visible links to the user's recipient, unless a mail is under way.
    void start();
    /// The screen that showed the outcome, if there was one, is left.
    void markSeen();

Q_SIGNALS:
    void changed();

private:
    Task<> send();
    Task<Outcome> deliver();

    const Dependencies m_dependencies;
    bool m_isSending = false;
    std::optional<Outcome> m_outcome;
    Scope m_tasks;
};
