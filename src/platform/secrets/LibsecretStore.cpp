#include "secrets/LibsecretStore.h"

#include "async/OnPool.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <libsecret/secret.h>
#include <mutex>
#include <thread>
#include <vector>

using namespace std::chrono_literals;

namespace
{

constexpr auto answerLimit = 5s;
constexpr auto accountAttribute = "account";

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
using Items = std::vector<Owned<SecretItem>>;
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
        list = g_list_prepend(list, item.get());
    return Owned<GList>(list);
}

/// Takes over the references that the list holds.
Items itemsOf(GList *list)
{
    const Owned<GList> owner(list);
    Items items;
    for (const GList *entry = list; entry; entry = entry->next)
        items.emplace_back(SECRET_ITEM(entry->data));
    return items;
}

QString accountOf(SecretItem *item)
{
    const Owned<GHashTable> attributes(secret_item_get_attributes(item));
    return QString::fromUtf8(
        static_cast<const char *>(g_hash_table_lookup(attributes.get(), accountAttribute)));
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
    /// Opens the service and searches our items, without unlocking any.
    static Expected<Conversation, SecretFault> begin(const QByteArray &serviceName);

    /// Asks the user for what is locked, if anything is, for as long as that takes.
    Result unlock();
    Expected<SecretStore::Secrets, SecretFault> load() const;
    Result keep(const Secret &secret) const;
    Result remove() const;

private:
    explicit Conversation(QByteArray serviceName)
        : m_serviceName(std::move(serviceName))
    {
    }
    Result open(const Deadline &deadline);
    Result search(const Deadline &deadline);

    QByteArray m_serviceName;
    Owned<GDBusConnection> m_bus;
    Owned<SecretService> m_service;
    Items m_open; ///< oldest first
    Items m_locked;
};

Expected<Conversation, SecretFault> Conversation::begin(const QByteArray &serviceName)
{
    const Deadline deadline;
    Conversation conversation(serviceName);
    if (const auto opened = conversation.open(deadline); !opened)
        return Unexpected{opened.error()};
    if (const auto searched = conversation.search(deadline); !searched)
        return Unexpected{searched.error()};
    return conversation;
}

Result Conversation::open(const Deadline &deadline)
{
    GError *error = nullptr;
    m_bus.reset(g_bus_get_sync(G_BUS_TYPE_SESSION, deadline.cancellable(), &error));
    if (!m_bus)
        return failure(error, &deadline);
    g_dbus_connection_set_exit_on_close(m_bus.get(), FALSE); // else the end of the bus is ours too
    m_service.reset(secret_service_open_sync(
        SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION, deadline.cancellable(), &error));
    if (!m_service)
        return failure(error, &deadline);
    return {};
}

Result Conversation::search(const Deadline &deadline)
{
    const Owned<GHashTable> attributes(
        secret_attributes_build(&schema, "service", m_serviceName.constData(), nullptr));
    GError *error = nullptr;
    GList *const found =
        secret_service_search_sync(m_service.get(), &schema, attributes.get(), SECRET_SEARCH_ALL,
                                   deadline.cancellable(), &error);
    if (error)
        return failure(error, &deadline);
    for (auto &item : itemsOf(found))
        (secret_item_get_locked(item.get()) ? m_locked : m_open).push_back(std::move(item));
    std::stable_sort(m_open.begin(), m_open.end(), [](const auto &one, const auto &other) {
        return secret_item_get_modified(one.get()) < secret_item_get_modified(other.get());
    });
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
    const Items opened = itemsOf(unlocked);
    if (error)
        return failure(error);
    if (opened.size() < m_locked.size())
        return Unexpected{SecretFault::locked};
    std::move(m_locked.begin(), m_locked.end(), std::back_inserter(m_open));
    m_locked.clear();
    return {};
}

Expected<SecretStore::Secrets, SecretFault> Conversation::load() const
{
    SecretStore::Secrets secrets;
    for (const auto &item : m_locked)
        secrets.insert(accountOf(item.get()), std::nullopt);

    const Deadline deadline;
    const auto open = listOf(m_open);
    GError *error = nullptr;
    if (open && !secret_item_load_secrets_sync(open.get(), deadline.cancellable(), &error))
        return failure(error, &deadline);
    for (const auto &item : m_open)
        secrets.insert(accountOf(item.get()), valueOf(item.get())); // of two, the newer stays
    return secrets;
}

Result Conversation::keep(const Secret &secret) const
{
    const QByteArray account = secret.account.toUtf8();
    const Owned<GHashTable> attributes(
        secret_attributes_build(&schema, "service", m_serviceName.constData(), accountAttribute,
                                account.constData(), nullptr));
    const Owned<SecretValue> value(
        secret_value_new(secret.value.constData(), secret.value.size(), "text/plain"));
    const QByteArray label = "Strandloom: " + account;
    GError *error = nullptr;
    if (!secret_service_store_sync(m_service.get(), &schema, attributes.get(),
                                   SECRET_COLLECTION_DEFAULT, label.constData(), value.get(),
                                   nullptr, &error))
        return failure(error);
    return {};
}

Result Conversation::remove() const
{
    for (const auto &item : m_open) {
        GError *error = nullptr;
        if (!secret_item_delete_sync(item.get(), nullptr, &error))
            return failure(error);
    }
    return {};
}

SecretStore::ReadResult readSecrets(const QByteArray &serviceName, UnlockPrompt prompt)
{
    auto conversation = Conversation::begin(serviceName);
    if (!conversation)
        return Unexpected{conversation.error()};
    if (prompt == UnlockPrompt::allowed)
        (void)conversation->unlock(); // what stays locked is told apart in the result
    return conversation->load();
}

Result writeSecrets(const QByteArray &serviceName, const QList<Secret> &secrets)
{
    const auto conversation = Conversation::begin(serviceName);
    if (!conversation)
        return Unexpected{conversation.error()};
    for (const Secret &secret : secrets) {
        if (auto kept = conversation->keep(secret); !kept)
            return kept;
    }
    return {};
}

Result removeSecrets(const QByteArray &serviceName)
{
    auto conversation = Conversation::begin(serviceName);
    if (!conversation)
        return Unexpected{conversation.error()};
    if (auto unlocked = conversation->unlock(); !unlocked)
        return unlocked;
    return conversation->remove();
}

} // namespace

LibsecretStore::LibsecretStore(const QString &serviceName)
    : m_serviceName(serviceName.toUtf8())
    , m_thread(std::make_unique<QThreadPool>())
{
    m_thread->setMaxThreadCount(1);
}

LibsecretStore::~LibsecretStore()
{
    m_thread->clear();
    if (!m_thread->waitForDone(int(std::chrono::milliseconds(100ms).count())))
        (void)m_thread.release(); // a prompt may be up for hours: it ends with the process
}

Task<SecretStore::ReadResult> LibsecretStore::read(UnlockPrompt prompt)
{
    OnPool<ReadResult> job(*m_thread,
                           [name = m_serviceName, prompt] { return readSecrets(name, prompt); });
    ReadResult secrets = co_await job;
    co_return secrets;
}

Task<SecretStore::Result> LibsecretStore::write(QList<Secret> secrets)
{
    OnPool<Result> job(*m_thread,
                       [name = m_serviceName, secrets] { return writeSecrets(name, secrets); });
    const Result written = co_await job;
    co_return written;
}

Task<SecretStore::Result> LibsecretStore::removeAll()
{
    OnPool<Result> job(*m_thread, [name = m_serviceName] { return removeSecrets(name); });
    const Result removed = co_await job;
    co_return removed;
}
