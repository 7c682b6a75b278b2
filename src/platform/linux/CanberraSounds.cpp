#include "platform/linux/CanberraSounds.h"

#include "platform/linux/x11/XSettings.h"

#include <canberra.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include <dlfcn.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t mostWaiting = 3; // Sounds; more come too late to mean anything.
constexpr std::chrono::seconds serverPause(30); // Before a server that failed is tried again.

const char *fileName(Sound sound)
{
    switch (sound) {
    case Sound::Pop:
        return "/pop.wav";
    case Sound::Tink:
        return "/tink.wav";
    case Sound::Beep:
        break;
    }
    return "/beep.wav";
}

/// A desktop that says nothing about event sounds has them on.
bool desktopWantsSounds()
{
    const QVariant setting = XSettings::read().value("Net/EnableEventSounds");
    return !setting.isValid() || setting.toInt() != 0;
}

/// The sound library, loaded with the first sound: with what it needs itself it
/// is six libraries, which every start of the program would wait for. Without it
/// there are no sounds.
struct Library
{
    decltype(&ca_context_create) create = nullptr;
    decltype(&ca_context_destroy) destroy = nullptr;
    decltype(&ca_context_change_props) changeProperties = nullptr;
    decltype(&ca_context_open) open = nullptr;
    decltype(&ca_context_play) play = nullptr;

    Library()
    {
        void *const handle = ::dlopen("libcanberra.so.0", RTLD_LAZY | RTLD_LOCAL);
        if (handle == nullptr)
            return;
        resolve(handle, "ca_context_create", create);
        resolve(handle, "ca_context_destroy", destroy);
        resolve(handle, "ca_context_change_props", changeProperties);
        resolve(handle, "ca_context_open", open);
        resolve(handle, "ca_context_play", play);
        usable = create && destroy && changeProperties && open && play;
    }

    bool usable = false;

private:
    template<typename Function>
    static void resolve(void *handle, const char *name, Function &function)
    {
        function = reinterpret_cast<Function>(::dlsym(handle, name));
    }
};

/// The way to the sound server. One that is missing or has gone costs a failed
/// attempt every half minute at most.
class Player
{
public:
    ~Player() { close(); }
    Player() = default;
    Player(const Player &) = delete;
    Player &operator=(const Player &) = delete;

    void play(const QByteArray &path)
    {
        if (!m_library.usable)
            return;
        if (m_context == nullptr && Clock::now() >= m_nextAttempt)
            open();
        if (m_context != nullptr
            && m_library.play(m_context, 0, CA_PROP_MEDIA_FILENAME, path.constData(),
                              CA_PROP_MEDIA_ROLE, "event", CA_PROP_CANBERRA_CACHE_CONTROL,
                              "volatile", nullptr)
                == CA_SUCCESS)
            return;
        close();
        if (Clock::now() >= m_nextAttempt)
            m_nextAttempt = Clock::now() + serverPause;
    }

private:
    void open()
    {
        if (m_library.create(&m_context) != CA_SUCCESS) {
            m_context = nullptr;
            return;
        }
        m_library.changeProperties(m_context, CA_PROP_APPLICATION_NAME, "Vantle",
                                   CA_PROP_APPLICATION_ID, "app.vantleapp.Vantle",
                                   CA_PROP_APPLICATION_ICON_NAME, "app.vantleapp.Vantle", nullptr);
        if (m_library.open(m_context) != CA_SUCCESS)
            close();
    }

    void close()
    {
        if (m_context != nullptr)
            m_library.destroy(std::exchange(m_context, nullptr));
    }

    Library m_library;
    ca_context *m_context = nullptr;
    Clock::time_point m_nextAttempt = Clock::time_point::min();
};

}

struct CanberraSounds::Shared
{
    QByteArray folder;
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Sound> waiting;
    bool ending = false;
};

CanberraSounds::CanberraSounds(QByteArray folder)
    : m_shared(std::make_shared<Shared>())
{
    m_shared->folder = std::move(folder);
}

/// Does not wait for the thread: a sound server that hangs must not keep the
/// process from ending.
CanberraSounds::~CanberraSounds()
{
    const std::lock_guard lock(m_shared->mutex);
    m_shared->ending = true;
    m_shared->changed.notify_one();
}

void CanberraSounds::play(Sound sound)
{
    {
        const std::lock_guard lock(m_shared->mutex);
        if (m_shared->waiting.size() >= mostWaiting)
            return;
        m_shared->waiting.push_back(sound);
        m_shared->changed.notify_one();
    }
    if (!std::exchange(m_started, true))
        std::thread(&CanberraSounds::run, m_shared).detach();
}

void CanberraSounds::run(const std::shared_ptr<Shared> &shared)
{
    Player player;
    for (;;) {
        std::unique_lock lock(shared->mutex);
        shared->changed.wait(lock, [&] { return shared->ending || !shared->waiting.empty(); });
        if (shared->ending)
            return;
        const Sound sound = shared->waiting.front();
        shared->waiting.pop_front();
        const QByteArray path = shared->folder + fileName(sound);
        lock.unlock();
        if (desktopWantsSounds())
            player.play(path);
    }
}
