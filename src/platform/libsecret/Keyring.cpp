// SPDX-License-Identifier: MIT
#include "Keyring.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <libsecret/secret.h>
#include <mutex>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr auto answerLimit = 5s;
constexpr auto accountAttribute = "account";
const QString anyAccount; ///< in a search

/// Other programs may have filed the items under another schema name, so names do not count.
const SecretSchema schema = {"app.strandloom.Credential",
                             SECRET_SCHEMA_DONT_MATCH_NAME,
                             {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING},
                              {accountAttribute, SECRET_SCHEMA_ATTRIBUTE_STRING}},
                             0,
                             nullptr,
                             nullptr,
                             nullptr,
                             nullptr,
                             nullptr,
                             nullptr,
                             nullptr};

struct Release {
    void operator()(GHashTable *table) const { g_hash_table_unref(table); }
    void operator()(GList *list) const { g_list_free(list); }
    void operator()(GError *error) const { g_error_free(error); }
    void operator()(SecretValue *value) const { secret_value_unref(value); }
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T>
using Owned = std::unique_ptr<T, Release>;

struct PopContext {
    void operator()(GMainContext *context) const
    {
        while (g_main_context_iteration(context, FALSE)) {
            // what the service's objects left behind is freed from here
        }
        g_main_context_pop_thread_default(context);
        g_main_context_unref(context);
    }
};
struct Item {
    QString account; ///< that was searched: a locked item tells only hashes of its attributes
    Owned<SecretItem> object;
};
using Items = std::vector<Item>;
using Result = SecretStore::Result;

/// Cancels what waits for the service when that takes too long.
class Deadline
{
public:
    Deadline()
        : m_cancellable(g_cancellable_new())
        , m_watch([this](const std::stop_token &over) {
            std::unique_lock lock(m_mutex);
            if (!m_over.wait_for(lock, over, answerLimit, [&] { return over.stop_requested(); }))
                g_cancellable_cancel(m_cancellable.get());
        })
    {
    }

    GCancellable *cancellable() const { return m_cancellable.get(); }

private:
    Owned<GCancellable> m_cancellable;
    std::mutex m_mutex;
    std::condition_variable_any m_over;
    std::jthread m_watch; ///< last: it uses all the others
};

/// Frees `error`.
Unexpected<SecretFault> failure(GError *error, const Deadline *deadline = nullptr)
{
    const Owned<GError> owner(error);
    const bool isCancelled = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED);
    if (isCancelled && deadline && g_cancellable_is_cancelled(deadline->cancellable()))
        return {SecretFault::timedOut};
    if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT))
        return {SecretFault::timedOut};
    if (isCancelled || g_error_matches(error, SECRET_ERROR, SECRET_ERROR_IS_LOCKED))
        return {SecretFault::locked}; // the user has dismissed the prompt, or there is no prompter
    return {SecretFault::unavailable};
}

Owned<GList> listOf(const Items &items)
{
    GList *list = nullptr;
    for (const auto &item : items)
        list = g_list_prepend(list, item.object.get());
    return Owned<GList>(list);
}

Owned<GHashTable> attributesOf(const QByteArray &serviceName, const QString &account)
{
    Owned<GHashTable> attributes(
        secret_attributes_build(&schema, "service", serviceName.constData(), nullptr));
    if (account != anyAccount)
        g_hash_table_insert(attributes.get(), g_strdup(accountAttribute),
                            g_strdup(account.toUtf8().constData()));
    return attributes;
}

std::optional<QByteArray> valueOf(SecretItem *item)
{
    const Owned<SecretValue> value(secret_item_get_secret(item));
    if (!value)
        return std::nullopt;
    gsize length = 0;
    const gchar *const bytes = secret_value_get(value.get(), &length);
    return QByteArray(bytes, qsizetype(length));
}

/// One conversation with the service, for one operation: a daemon that was started anew knows
/// nothing of older ones.
class Conversation
{
public:
    /// Opens the service and searches the items of `accounts`, without unlocking any.
    static Expected<Conversation, SecretFault> begin(const QByteArray &serviceName,
                                                     const QStringList &accounts);

    /// Asks the user for what is locked, if anything is, for as long as that takes.
    Result unlock();
    /// Whether the search may have missed items because the keyring is locked.
    Expected<bool, SecretFault> mayHideItems() const;
    /// What was found, without the values of what is not locked.
    SecretStore::Secrets found() const;
    Expected<SecretStore::Secrets, SecretFault> load() const;
    /// Replaces the values of the items that were found for the account, or creates one.
    Result keep(const Secret &secret) const;
    Result remove() const;

private:
    explicit Conversation(QByteArray serviceName);

    Result connect(const Deadline &deadline);
    Result open(const Deadline &deadline);
    Result search(const QString &account, const Deadline &deadline);
    Result create(const QString &account, SecretValue *value) const;

    QByteArray m_serviceName;
    std::unique_ptr<GMainContext, PopContext> m_context; ///< else signals go to the main thread
    Owned<GDBusConnection> m_bus; ///< the one that the process shares
    Owned<SecretService> m_service;
    Items m_open;
    Items m_locked;
};

Conversation::Conversation(QByteArray serviceName)
    : m_serviceName(std::move(serviceName))
    , m_context(g_main_context_new())
{
    g_main_context_push_thread_default(m_context.get());
}

Expected<Conversation, SecretFault> Conversation::begin(const QByteArray &serviceName,
                                                        const QStringList &accounts)
{
    const Deadline deadline;
    Conversation conversation(serviceName);
    if (const auto connected = conversation.connect(deadline); !connected)
        return Unexpected{connected.error()};
    if (const auto opened = conversation.open(deadline); !opened)
        return Unexpected{opened.error()};
    for (const QString &account : accounts) {
        if (const auto searched = conversation.search(account, deadline); !searched)
            return Unexpected{searched.error()};
    }
    return conversation;
}

Result Conversation::connect(const Deadline &deadline)
{
    GError *error = nullptr;
    m_bus.reset(g_bus_get_sync(G_BUS_TYPE_SESSION, deadline.cancellable(), &error));
    if (!m_bus)
        return failure(error, &deadline);
    g_dbus_connection_set_exit_on_close(m_bus.get(), FALSE); // else the end of the bus is ours too
    if (g_dbus_connection_is_closed(m_bus.get()))
        return Unexpected{SecretFault::unavailable};
    return {};
}

Result Conversation::open(const Deadline &deadline)
{
    GError *error = nullptr;
    m_service.reset(secret_service_open_sync(
        SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION, deadline.cancellable(), &error));
    return m_service ? Result() : failure(error, &deadline);
}

Result Conversation::search(const QString &account, const Deadline &deadline)
{
    const auto attributes = attributesOf(m_serviceName, account);
    GError *error = nullptr;
    const Owned<GList> found(secret_service_search_sync(m_service.get(), &schema, attributes.get(),
                                                        SECRET_SEARCH_ALL, deadline.cancellable(),
                                                        &error));
    if (error)
        return failure(error, &deadline);
    for (const GList *entry = found.get(); entry; entry = entry->next) {
        Item item{account, Owned<SecretItem>(SECRET_ITEM(entry->data))};
        const bool isLocked = secret_item_get_locked(item.object.get());
        (isLocked ? m_locked : m_open).push_back(std::move(item));
    }
    return {};
}

Result Conversation::unlock()
{
    if (m_locked.empty())
        return {};
    const auto locked = listOf(m_locked);
    GList *unlocked = nullptr;
    GError *error = nullptr;
    secret_service_unlock_sync(m_service.get(), locked.get(), nullptr, &unlocked, &error);
    const guint count = g_list_length(unlocked);
    g_list_free_full(unlocked, g_object_unref);
    if (error)
        return failure(error);
    if (count < m_locked.size())
        return Unexpected{SecretFault::locked};
    std::move(m_locked.begin(), m_locked.end(), std::back_inserter(m_open));
    m_locked.clear();
    return {};
}

/// Not every service searches what is locked.
Expected<bool, SecretFault> Conversation::mayHideItems() const
{
    if (!m_open.empty() || !m_locked.empty())
        return false;
    const Deadline deadline;
    GError *error = nullptr;
    const Owned<SecretCollection> keyring(
        secret_collection_for_alias_sync(m_service.get(), SECRET_COLLECTION_DEFAULT,
                                         SECRET_COLLECTION_NONE, deadline.cancellable(), &error));
    if (error)
        return failure(error, &deadline);
    return keyring && secret_collection_get_locked(keyring.get());
}

SecretStore::Secrets Conversation::found() const
{
    SecretStore::Secrets secrets;
    for (const Item &item : m_locked)
        secrets.insert(item.account, std::nullopt);
    for (const Item &item : m_open)
        secrets.insert(item.account, QByteArray());
    return secrets;
}

Expected<SecretStore::Secrets, SecretFault> Conversation::load() const
{
    const Deadline deadline;
    const auto list = listOf(m_open);
    GError *error = nullptr;
    if (list && !secret_item_load_secrets_sync(list.get(), deadline.cancellable(), &error))
        return failure(error, &deadline);

    SecretStore::Secrets secrets = found();
    QHash<QString, guint64> modified;
    for (const Item &item :
         m_open) { // several when they are in several keyrings: the newest counts
        const guint64 time = secret_item_get_modified(item.object.get());
        if (time >= modified.value(item.account))
            secrets.insert(item.account, valueOf(item.object.get()));
        modified[item.account] = std::max(time, modified.value(item.account));
    }
    return secrets;
}

Result Conversation::keep(const Secret &secret) const
{
    const Owned<SecretValue> value(
        secret_value_new(secret.value.constData(), secret.value.size(), "text/plain"));
    bool isKept = false;
    for (const Item &item : m_open) { // another program's too: a new one would be a second
        if (item.account != secret.account)
            continue;
        GError *error = nullptr;
        if (!secret_item_set_secret_sync(item.object.get(), value.get(), nullptr, &error))
            return failure(error);
        isKept = true;
    }
    return isKept ? Result() : create(secret.account, value.get());
}

Result Conversation::create(const QString &account, SecretValue *value) const
{
    const auto attributes = attributesOf(m_serviceName, account);
    const QByteArray label = "Strandloom: " + account.toUtf8();
    GError *error = nullptr;
    if (!secret_service_store_sync(m_service.get(), &schema, attributes.get(),
                                   SECRET_COLLECTION_DEFAULT, label.constData(), value, nullptr,
                                   &error))
        return failure(error);
    return {};
}

Result Conversation::remove() const
{
    for (const Item &item : m_open) {
        GError *error = nullptr;
        if (!secret_item_delete_sync(item.object.get(), nullptr, &error))
            return failure(error);
    }
    return {};
}

} // namespace

SecretStore::ReadResult readSecrets(const QByteArray &serviceName, const QStringList &accounts,
                                    UnlockPrompt prompt, SecretPart part)
{
    auto conversation = Conversation::begin(serviceName, accounts);
    if (!conversation)
        return Unexpected{conversation.error()};
    if (prompt == UnlockPrompt::allowed)
        (void)conversation->unlock(); // what stays locked is told apart in the result
    const auto isHidden = conversation->mayHideItems();
    if (!isHidden || *isHidden)
        return Unexpected{isHidden ? SecretFault::locked : isHidden.error()};
    return part == SecretPart::value ? conversation->load() : conversation->found();
}

SecretStore::Result writeSecrets(const QByteArray &serviceName, const QList<Secret> &secrets)
{
    QStringList accounts;
    for (const Secret &secret : secrets)
        accounts.append(secret.account);
    auto conversation = Conversation::begin(serviceName, accounts);
    if (!conversation)
        return Unexpected{conversation.error()};
    if (auto unlocked = conversation->unlock(); !unlocked)
        return unlocked;
    for (const Secret &secret : secrets) {
        if (auto kept = conversation->keep(secret); !kept)
            return kept;
    }
    return {};
}

SecretStore::Result removeSecrets(const QByteArray &serviceName)
{
    auto conversation = Conversation::begin(serviceName, {anyAccount});
    if (!conversation)
        return Unexpected{conversation.error()};
    if (auto unlocked = conversation->unlock(); !unlocked)
        return unlocked;
    return conversation->remove();
}
