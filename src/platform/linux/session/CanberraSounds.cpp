#include "platform/linux/session/CanberraSounds.h"

#include "base/HandedOver.h"

#include <QThreadPool>

#include <canberra.h>

#include <atomic>
#include <chrono>
#include <utility>

#include <dlfcn.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int mostWaiting = 3; // Sounds; more come too late to mean anything.
constexpr std::chrono::seconds serverPause(30); // Before a server that failed is tried again.

const char *fileName(Sound sound)
{
    if (sound == Sound::Beep)
        return "/beep.wav";
    return sound == Sound::Pop ? "/pop.wav" : "/tink.wav";
}

/// A desktop that says nothing about event sounds has them on.
bool desktopWantsSounds(const ManagedSettings &settings)
{
    const QVariant setting = settings.value("Net/EnableEventSounds");
    return !setting.isValid() || setting.toInt() != 0;
}

/// The sound library, loaded with the first sound: with what it needs itself it
/// is six libraries, which every start of the program would wait for. Without it
/// there are no sounds.
struct Library
{
    void *handle = ::dlopen("libcanberra.so.0", RTLD_LAZY | RTLD_LOCAL);
    decltype(&ca_context_create) create = resolve("ca_context_create");
    decltype(&ca_context_destroy) destroy = resolve("ca_context_destroy");
    decltype(&ca_context_change_props) changeProperties = resolve("ca_context_change_props");
    decltype(&ca_context_play) play = resolve("ca_context_play");

private:
    struct Symbol
    {
        void *address;
        template<typename Function>
        operator Function *() const
        {
            return reinterpret_cast<Function *>(address);
        }
    };
    Symbol resolve(const char *name) const { return { handle ? ::dlsym(handle, name) : nullptr }; }
};

/// The way to the sound server. One that is missing or has gone costs a failed
/// attempt every half minute at most.
class Player
{
public:
    void play(const QByteArray &path)
    {
        if (m_library.handle == nullptr || Clock::now() < m_nextAttempt)
            return;
        if (!m_context)
            makeContext();
        if (m_context
            && m_library.play(m_context.get(), 0, CA_PROP_MEDIA_FILENAME, path.constData(),
                              CA_PROP_MEDIA_ROLE, "event", CA_PROP_CANBERRA_CACHE_CONTROL,
                              "volatile", nullptr)
                == CA_SUCCESS)
            return;
        m_context.reset();
        m_nextAttempt = Clock::now() + serverPause;
    }

private:
    /// The first sound connects it.
    void makeContext()
    {
        ca_context *made = nullptr;
        if (m_library.create(&made) != CA_SUCCESS)
            return;
        m_context.reset(made);
        m_library.changeProperties(made, CA_PROP_APPLICATION_NAME, "Vantle", CA_PROP_APPLICATION_ID,
                                   "app.vantleapp.Vantle", CA_PROP_APPLICATION_ICON_NAME,
                                   "app.vantleapp.Vantle", nullptr);
    }

    Library m_library;
    std::unique_ptr<ca_context, decltype(&ca_context_destroy)> m_context { nullptr,
                                                                           m_library.destroy };
    Clock::time_point m_nextAttempt = Clock::time_point::min();
};

}

struct CanberraSounds::Thread
{
    Player player;
    std::atomic<int> waiting = 0;
    QThreadPool pool;
};

CanberraSounds::CanberraSounds(QByteArray folder, ReadSettings readSettings)
    : m_folder(std::move(folder))
    , m_readSettings(std::move(readSettings))
{
}

/// Does not wait for the thread: a sound server that hangs must not keep the
/// process from ending.
CanberraSounds::~CanberraSounds()
{
    if (!m_thread)
        return;
    m_thread->pool.clear();
    if (!m_thread->pool.waitForDone(0))
        static_cast<void>(m_thread.release());
}

void CanberraSounds::play(Sound sound)
{
    if (!m_thread) {
        m_thread = std::make_unique<Thread>();
        m_thread->pool.setMaxThreadCount(1);
    }
    if (m_thread->waiting >= mostWaiting)
        return;
    ++m_thread->waiting;
    m_thread->pool.start(handedOver(
        [thread = m_thread.get(), path = m_folder + fileName(sound), read = m_readSettings] {
            --thread->waiting;
            if (desktopWantsSounds(read()))
                thread->player.play(path);
        }));
}
