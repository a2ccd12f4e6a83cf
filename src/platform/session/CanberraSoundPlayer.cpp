#include "platform/session/CanberraSoundPlayer.h"

#include <canberra.h>
#include <dlfcn.h>

#include <QString>
#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>

namespace tidemark {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// The sounds last about a second.
constexpr auto longestSound = 10s;
constexpr auto longestFarewell = 200ms;

/// The event in the sound theme; null for an unknown name.
const char* eventFor(const QString& name) {
    if (name == "Glass"_L1)
        return "complete";
    if (name == "Basso"_L1)
        return "dialog-error";
    return nullptr;
}

void ignoreAlsaError(const char* /*file*/, int /*line*/, const char* /*function*/, int /*error*/,
                     const char* /*format*/, ...) {}

/// Without a sound card, ALSA writes a page of errors to stderr for every sound. We do not link to it,
/// because libcanberra loads it only where it plays through it.
void silenceAlsa() {
    void* library = dlopen("libasound.so.2", RTLD_LAZY | RTLD_NOLOAD);
    if (library == nullptr)
        return;
    using SetErrorHandler = int (*)(decltype(&ignoreAlsaError));
    const auto setErrorHandler =
        reinterpret_cast<SetErrorHandler>(dlsym(library, "snd_lib_error_set_handler"));
    if (setErrorHandler != nullptr)
        setErrorHandler(&ignoreAlsaError);
    dlclose(library);
}

}  // namespace

struct CanberraSoundPlayer::Queue {
    std::mutex mutex;
    std::condition_variable changed;
    /// The event that is playing and those that wait, in order. The thread runs while there are any.
    std::deque<const char*> events;
    bool isSoundOver = false;
    bool isStopped = false;

    void run();
    void playSound(const char* event);
    static void onSoundOver(ca_context* context, uint32_t id, int error, void* queue);
};

void CanberraSoundPlayer::Queue::run() {
    std::unique_lock lock(mutex);
    while (!events.empty() && !isStopped) {
        const char* event = events.front();
        isSoundOver = false;
        lock.unlock();
        playSound(event);
        lock.lock();
        events.pop_front();
    }
    events.clear();
    changed.notify_all();
}

void CanberraSoundPlayer::Queue::playSound(const char* event) {
    ca_context* context = nullptr;
    if (ca_context_create(&context) != CA_SUCCESS)
        return;
    // Loads the sound library. ALSA reports errors only once it plays.
    ca_context_open(context);
    silenceAlsa();
    ca_proplist* properties = nullptr;
    ca_proplist_create(&properties);
    ca_proplist_sets(properties, CA_PROP_EVENT_ID, event);
    ca_proplist_sets(properties, CA_PROP_MEDIA_ROLE, "event");
    if (ca_context_play_full(context, 0, properties, &Queue::onSoundOver, this) == CA_SUCCESS) {
        std::unique_lock lock(mutex);
        changed.wait_for(lock, longestSound, [this] { return isSoundOver || isStopped; });
    }
    ca_proplist_destroy(properties);
    ca_context_destroy(context);
}

void CanberraSoundPlayer::Queue::onSoundOver(ca_context* /*context*/, uint32_t /*id*/, int /*error*/,
                                             void* queue) {
    auto& self = *static_cast<Queue*>(queue);
    const std::scoped_lock lock(self.mutex);
    self.isSoundOver = true;
    self.changed.notify_all();
}

CanberraSoundPlayer::CanberraSoundPlayer() : m_queue(std::make_shared<Queue>()) {}

CanberraSoundPlayer::~CanberraSoundPlayer() {
    std::unique_lock lock(m_queue->mutex);
    m_queue->isStopped = true;
    m_queue->changed.notify_all();
    m_queue->changed.wait_for(lock, longestFarewell, [this] { return m_queue->events.empty(); });
}

void CanberraSoundPlayer::play(const QString& name) {
    const char* event = eventFor(name);
    if (event == nullptr)
        return;
    const std::scoped_lock lock(m_queue->mutex);
    if (std::ranges::find(m_queue->events, event) != m_queue->events.end())
        return;
    m_queue->events.push_back(event);
    if (m_queue->events.size() > 1)
        return;
    try {
        std::thread([queue = m_queue] { queue->run(); }).detach();
    } catch (const std::system_error&) {
        // The system has no thread left, so nothing plays.
        m_queue->events.clear();
    }
}

}  // namespace tidemark
