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

struct ContextDeleter
{
    void operator()(ca_context *context) const { ca_context_destroy(context); }
};
using Context = std::unique_ptr<ca_context, ContextDeleter>;

Context openContext()
{
    ca_context *made = nullptr;
    if (ca_context_create(&made) != CA_SUCCESS)
        return {};
    Context context(made);
    ca_context_change_props(made, CA_PROP_APPLICATION_NAME, "Vantle", CA_PROP_APPLICATION_ID,
                            "app.vantleapp.Vantle", CA_PROP_APPLICATION_ICON_NAME,
                            "app.vantleapp.Vantle", nullptr);
    if (ca_context_open(made) != CA_SUCCESS)
        return {};
    return context;
}

/// The way to the sound server. One that is missing or has gone costs a failed
/// attempt every half minute at most.
class Player
{
public:
    void play(const QByteArray &path)
    {
        if (!m_context && Clock::now() >= m_nextAttempt)
            m_context = openContext();
        if (m_context
            && ca_context_play(m_context.get(), 0, CA_PROP_MEDIA_FILENAME, path.constData(),
                               CA_PROP_MEDIA_ROLE, "event", CA_PROP_CANBERRA_CACHE_CONTROL,
                               "volatile", nullptr)
                == CA_SUCCESS)
            return;
        m_context.reset();
        if (Clock::now() >= m_nextAttempt)
            m_nextAttempt = Clock::now() + serverPause;
    }

private:
    Context m_context;
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
