#include "platform/keyring/SecretServiceKeychain.h"

#include <libsecret/secret.h>

#include "platform/keyring/SecretServiceWatcher.h"

namespace tidemark {

namespace {

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T>
using Object = std::unique_ptr<T, Unref>;

struct UnrefSecret {
    void operator()(gpointer value) const { secret_value_unref(value); }
};
using Secret = std::unique_ptr<SecretValue, UnrefSecret>;

struct FreeItems {
    void operator()(GList* items) const { g_list_free_full(items, g_object_unref); }
};
using Items = std::unique_ptr<GList, FreeItems>;

struct UnrefVariant {
    void operator()(gpointer variant) const { g_variant_unref(static_cast<GVariant*>(variant)); }
};
using Variant = std::unique_ptr<GVariant, UnrefVariant>;

struct UnrefTable {
    void operator()(GHashTable* table) const { g_hash_table_unref(table); }
};
using Attributes = std::unique_ptr<GHashTable, UnrefTable>;

/// Takes the errors that we do not look at. Each use frees the previous one.
class Error {
public:
    Error() = default;
    Error(const Error&) = delete;
    Error& operator=(const Error&) = delete;
    ~Error() { g_clear_error(&m_error); }

    GError** operator&() {
        clear();
        return &m_error;
    }
    void clear() { g_clear_error(&m_error); }
    explicit operator bool() const { return m_error != nullptr; }
    /// Whether the other side did not answer in time.
    [[nodiscard]] bool isSilence() const {
        return g_error_matches(m_error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT) != FALSE ||
               g_error_matches(m_error, G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY) != FALSE ||
               g_error_matches(m_error, G_DBUS_ERROR, G_DBUS_ERROR_TIMEOUT) != FALSE;
    }

private:
    GError* m_error = nullptr;
};

/// Matches items with these attributes under any schema name, including those of other programs and older
/// versions.
const SecretSchema& schema() {
    static const SecretSchema schema = [] {
        SecretSchema result{};
        result.name = "org.freedesktop.Secret.Generic";
        result.flags = SECRET_SCHEMA_DONT_MATCH_NAME;
        result.attributes[0] = {"service", SECRET_SCHEMA_ATTRIBUTE_STRING};
        result.attributes[1] = {"account", SECRET_SCHEMA_ATTRIBUTE_STRING};
        result.attributes[2] = {"synchronizable", SECRET_SCHEMA_ATTRIBUTE_BOOLEAN};
        return result;
    }();
    return schema;
}

Attributes attributes(const KeychainQuery& query) {
    Attributes result(g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free));
    const auto insert = [&result](const char* name, const char* value) {
        g_hash_table_insert(result.get(), g_strdup(name), g_strdup(value));
    };
    insert("service", query.service.toUtf8().constData());
    insert("account", query.account.toUtf8().constData());
    if (query.synchronizable)
        insert("synchronizable", *query.synchronizable ? "true" : "false");
    return result;
}

/// Makes one GMainContext the thread's default while it exists. All calls share this context, because
/// libsecret keeps one proxy for the process and releases it only in the context that created it.
class ThreadLoop {
public:
    ThreadLoop() { g_main_context_push_thread_default(context()); }
    ThreadLoop(const ThreadLoop&) = delete;
    ThreadLoop& operator=(const ThreadLoop&) = delete;
    ~ThreadLoop() {
        // Releases the objects of this context that are not used any more.
        while (g_main_context_iteration(context(), FALSE) != FALSE) {
        }
        g_main_context_pop_thread_default(context());
    }

    /// Runs until `isOver`, which is called after each event, returns true or until it is cancelled.
    template <typename Condition>
    static void run(GCancellable* cancellable, Condition isOver) {
        GSource* wake = g_cancellable_source_new(cancellable);
        g_source_set_dummy_callback(wake);
        g_source_attach(wake, context());
        while (!isOver() && g_cancellable_is_cancelled(cancellable) == FALSE)
            g_main_context_iteration(context(), TRUE);
        g_source_destroy(wake);
        g_source_unref(wake);
    }

private:
    static GMainContext* context() {
        static GMainContext* const context = g_main_context_new();
        return context;
    }
};

/// A prompt of the service to the user.
class Prompt {
public:
    enum class Outcome : quint8 {
        accepted,
        declined,
        lost,  ///< the service went away, or the wait was cancelled
    };

    /// Shows the prompt and waits for its outcome. We never dismiss a prompt, because gnome-keyring crashes
    /// then (tested with version 42), and do not use libsecret's prompts, because they would wait for another
    /// thread's main loop.
    static Outcome perform(GDBusConnection* connection, const char* service, const char* path,
                           GCancellable* cancellable) {
        const ThreadLoop loop;
        Prompt prompt;
        const guint completed = g_dbus_connection_signal_subscribe(
            connection, service, "org.freedesktop.Secret.Prompt", "Completed", path, nullptr,
            G_DBUS_SIGNAL_FLAGS_NONE, &Prompt::onCompleted, &prompt, nullptr);
        const guint watch = g_bus_watch_name_on_connection(connection, service, G_BUS_NAME_WATCHER_FLAGS_NONE,
                                                           nullptr, &Prompt::onVanished, &prompt, nullptr);
        const Variant shown(g_dbus_connection_call_sync(
            connection, service, path, "org.freedesktop.Secret.Prompt", "Prompt", g_variant_new("(s)", ""),
            nullptr, G_DBUS_CALL_FLAGS_NONE, -1, cancellable, nullptr));
        if (shown)
            ThreadLoop::run(cancellable, [&prompt] { return prompt.m_isOver; });
        g_bus_unwatch_name(watch);
        g_dbus_connection_signal_unsubscribe(connection, completed);
        return prompt.m_outcome;
    }

private:
    static void onCompleted(GDBusConnection* /*connection*/, const char* /*sender*/, const char* /*path*/,
                            const char* /*interface*/, const char* /*signal*/, GVariant* parameters,
                            gpointer data) {
        auto& prompt = *static_cast<Prompt*>(data);
        gboolean isDismissed = TRUE;
        g_variant_get(parameters, "(bv)", &isDismissed, nullptr);
        prompt.m_isOver = true;
        prompt.m_outcome = isDismissed == FALSE ? Outcome::accepted : Outcome::declined;
    }

    static void onVanished(GDBusConnection* /*connection*/, const char* /*name*/, gpointer data) {
        static_cast<Prompt*>(data)->m_isOver = true;
    }

    bool m_isOver = false;
    Outcome m_outcome = Outcome::lost;
};

}  // namespace

/// The calls to the Secret Service. Once cancelled, it shows no prompts and reads nothing, but writes what
/// needs no prompt.
class SecretServiceKeychain::Calls {
public:
    void beginSession(Prompting prompting) {
        endSession();
        m_isRefused = prompting == Prompting::unlessDeclined && m_hasDeclined;
        m_owner.clear();
    }
    /// libsecret keeps one proxy for the process. Its GMainContext does not run between batches, so the proxy
    /// would not notice that the service was restarted, and would queue all signals about other programs'
    /// items.
    void endSession() {
        const ThreadLoop loop;
        secret_service_disconnect();
        m_isSilent = false;
        m_error.clear();
    }
    void cancel() { g_cancellable_cancel(m_cancellable.get()); }

    [[nodiscard]] bool isCancelled() const {
        return g_cancellable_is_cancelled(m_cancellable.get()) != FALSE;
    }

    /// Cancels reads. Writes are never cancelled.
    [[nodiscard]] GCancellable* cancellable() const { return m_cancellable.get(); }

    /// Null when there is no service, or when it has left a call of this batch unanswered.
    [[nodiscard]] Object<SecretService> service(GCancellable* cancellable) {
        if (isSilent())
            return nullptr;
        Object<SecretService> service(
            secret_service_get_sync(SECRET_SERVICE_OPEN_SESSION, cancellable, &m_error));
        if (service && m_owner.isEmpty())
            m_owner = currentOwner();
        return service;
    }

    /// Whether the service has left a call of this batch unanswered.
    [[nodiscard]] bool isSilent() {
        m_isSilent = m_isSilent || m_error.isSilence();
        return m_isSilent;
    }

    /// Whether an item that the last search did not find does not exist: the search succeeded, and the
    /// service is the one of the beginning of this batch.
    [[nodiscard]] bool isSureOfNothing() {
        return !m_error && !isCancelled() && !m_owner.isEmpty() && currentOwner() == m_owner;
    }

    [[nodiscard]] Items search(SecretService* service, const KeychainQuery& query,
                               GCancellable* cancellable) {
        return Items(secret_service_search_sync(service, &schema(), attributes(query).get(),
                                                SECRET_SEARCH_ALL, cancellable, &m_error));
    }

    /// Nothing when the user does not unlock the item.
    std::optional<QByteArray> data(SecretService* service, SecretItem* item) {
        if (secret_item_get_locked(item) != FALSE && !unlock(service, pathOf(item)))
            return std::nullopt;
        if (secret_item_load_secret_sync(item, m_cancellable.get(), &m_error) == FALSE)
            return std::nullopt;
        const Secret secret(secret_item_get_secret(item));
        if (!secret)
            return std::nullopt;
        gsize size = 0;
        const char* bytes = secret_value_get(secret.get(), &size);
        return QByteArray(bytes, static_cast<qsizetype>(size));
    }

    void remove(SecretService* service, SecretItem* item) {
        if (secret_item_get_locked(item) == FALSE || unlock(service, pathOf(item)))
            call(service, pathOf(item), "org.freedesktop.Secret.Item", "Delete", nullptr);
    }

    /// Unlocks the default collection, or creates it where there is none.
    bool openDefaultCollection(SecretService* service) {
        const Object<SecretCollection> collection(secret_collection_for_alias_sync(
            service, SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, nullptr, &m_error));
        if (collection)
            return secret_collection_get_locked(collection.get()) == FALSE ||
                   unlock(service, pathOf(collection.get()));
        GVariantBuilder properties;
        g_variant_builder_init(&properties, G_VARIANT_TYPE_VARDICT);
        g_variant_builder_add(&properties, "{sv}", "org.freedesktop.Secret.Collection.Label",
                              g_variant_new_string("Default"));
        return call(service, "/org/freedesktop/secrets", "org.freedesktop.Secret.Service", "CreateCollection",
                    g_variant_new("(a{sv}s)", &properties, "default"));
    }

    bool store(SecretService* service, const KeychainQuery& query, const QByteArray& data) {
        const Secret secret(secret_value_new(data.constData(), data.size(), "text/plain"));
        const QByteArray label = "Tidemark " + query.account.toUtf8();
        return secret_service_store_sync(service, &schema(), attributes(query).get(),
                                         SECRET_COLLECTION_DEFAULT, label.constData(), secret.get(), nullptr,
                                         &m_error) != FALSE;
    }

private:
    /// The unique bus name of the running service; empty when there is none. Does not start one.
    QByteArray currentOwner() {
        const Object<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &m_error));
        if (!bus)
            return {};
        const Variant answer(g_dbus_connection_call_sync(
            bus.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
            "GetNameOwner", g_variant_new("(s)", "org.freedesktop.secrets"), G_VARIANT_TYPE("(s)"),
            G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &m_error));
        const char* owner = nullptr;
        if (answer)
            g_variant_get(answer.get(), "(&s)", &owner);
        return owner;
    }

    static const char* pathOf(gpointer object) { return g_dbus_proxy_get_object_path(G_DBUS_PROXY(object)); }

    bool unlock(SecretService* service, const char* path) {
        GVariantBuilder objects;
        g_variant_builder_init(&objects, G_VARIANT_TYPE_OBJECT_PATH_ARRAY);
        g_variant_builder_add(&objects, "o", path);
        return call(service, "/org/freedesktop/secrets", "org.freedesktop.Secret.Service", "Unlock",
                    g_variant_new("(ao)", &objects));
    }

    /// Calls a method whose answer ends with the path of a prompt, or "/" for none. Performs the prompt
    /// unless one of this batch has been declined.
    bool call(SecretService* service, const char* path, const char* interface, const char* method,
              GVariant* arguments) {
        auto* proxy = G_DBUS_PROXY(service);
        GDBusConnection* connection = g_dbus_proxy_get_connection(proxy);
        const char* name = g_dbus_proxy_get_name(proxy);
        const Variant answer(g_dbus_connection_call_sync(connection, name, path, interface, method, arguments,
                                                         nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr,
                                                         &m_error));
        if (!answer || g_variant_n_children(answer.get()) == 0)
            return false;
        const Variant last(g_variant_get_child_value(answer.get(), g_variant_n_children(answer.get()) - 1));
        if (g_variant_is_of_type(last.get(), G_VARIANT_TYPE_OBJECT_PATH) == FALSE)
            return false;
        const char* prompt = g_variant_get_string(last.get(), nullptr);
        if (g_strcmp0(prompt, "/") == 0)
            return true;
        if (m_isRefused || isCancelled())
            return false;
        const Prompt::Outcome outcome = Prompt::perform(connection, name, prompt, m_cancellable.get());
        m_isRefused = outcome != Prompt::Outcome::accepted;
        m_hasDeclined = m_hasDeclined || outcome == Prompt::Outcome::declined;
        return !m_isRefused;
    }

    Object<GCancellable> m_cancellable{g_cancellable_new()};
    Error m_error;
    /// The service's unique bus name at the beginning of this batch; empty until its first call.
    QByteArray m_owner;
    /// Whether prompts are declined for the rest of this batch.
    bool m_isRefused = false;
    bool m_isSilent = false;
    /// Whether the user has declined a prompt since the program started.
    bool m_hasDeclined = false;
};

SecretServiceKeychain::SecretServiceKeychain() : m_calls(std::make_unique<Calls>()) {}

SecretServiceKeychain::~SecretServiceKeychain() = default;

void SecretServiceKeychain::beginSession(Prompting prompting) {
    m_calls->beginSession(prompting);
}

void SecretServiceKeychain::endSession() {
    m_calls->endSession();
}

std::unique_ptr<KeychainWatcher> SecretServiceKeychain::makeWatcher() {
    return std::make_unique<SecretServiceWatcher>(QDBusConnection::sessionBus());
}

tl::expected<QByteArray, KeychainError> SecretServiceKeychain::copyMatching(const KeychainQuery& query) {
    const ThreadLoop loop;
    const auto service = m_calls->isCancelled() ? nullptr : m_calls->service(m_calls->cancellable());
    if (!service)
        return tl::unexpected(KeychainError::unreadable);
    const Items items = m_calls->search(service.get(), query, m_calls->cancellable());
    if (!items)
        return tl::unexpected(m_calls->isSureOfNothing() ? KeychainError::notFound
                                                         : KeychainError::unreadable);
    for (const GList* entry = items.get(); entry && !m_calls->isSilent(); entry = entry->next)
        if (auto data = m_calls->data(service.get(), static_cast<SecretItem*>(entry->data)))
            return *std::move(data);
    return tl::unexpected(KeychainError::unreadable);
}

bool SecretServiceKeychain::add(const KeychainQuery& attributes, const QByteArray& data) {
    const ThreadLoop loop;
    const auto service = m_calls->service(nullptr);
    return service && m_calls->openDefaultCollection(service.get()) &&
           m_calls->store(service.get(), attributes, data);
}

void SecretServiceKeychain::deleteMatching(const KeychainQuery& query) {
    const ThreadLoop loop;
    const auto service = m_calls->service(nullptr);
    if (!service)
        return;
    const Items items = m_calls->search(service.get(), query, nullptr);
    for (const GList* entry = items.get(); entry && !m_calls->isSilent(); entry = entry->next)
        m_calls->remove(service.get(), static_cast<SecretItem*>(entry->data));
}

void SecretServiceKeychain::cancel() {
    m_calls->cancel();
}

}  // namespace tidemark
