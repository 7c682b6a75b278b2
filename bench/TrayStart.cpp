// Is the tray, starts programs in turn and tells when each handed over its icon
// and what memory it holds once it is idle.
//   bench_tray_start ROUNDS IDLE_SECONDS -- PROGRAM [ARGUMENT…] [-- PROGRAM …]…
// One line a start: number of the program, milliseconds from the start to the icon,
// proportional kilobytes of the process, and of all processes of its session.
#include "platform/linux/x11/Xcb.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr auto startLimit = 10s;
constexpr auto endLimit = 5s;
constexpr int iconSize = 24;

/// A tray of the embedding kind; it takes icons one after the other.
class Tray
{
public:
    explicit Tray(xcb_connection_t *connection)
        : m_connection(connection)
        , m_atoms(connection)
    {
        const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
        m_window = xcb_generate_id(connection);
        const quint32 mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, m_window, screen->root, 0, 0, 200,
                          iconSize, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual,
                          XCB_CW_EVENT_MASK, &mask);
        xcb_map_window(connection, m_window);
        const xcb_atom_t selection = m_atoms("_NET_SYSTEM_TRAY_S0");
        xcb_set_selection_owner(connection, m_window, selection, XCB_CURRENT_TIME);
        Xcb::sendMessage(connection, screen->root, m_atoms("MANAGER"),
                         { XCB_CURRENT_TIME, selection, m_window }, screen->root);
    }

    /// When the next program asked to have its icon taken; none if it does not in time.
    std::optional<Clock::time_point> takeIcon()
    {
        const auto end = Clock::now() + startLimit;
        while (Clock::now() < end) {
            pollfd wait { xcb_get_file_descriptor(m_connection), POLLIN, 0 };
            poll(&wait, 1, 100);
            const auto now = Clock::now();
            while (
                const Xcb::Owned<xcb_generic_event_t> event { xcb_poll_for_event(m_connection) }) {
                if (embed(*event))
                    return now;
            }
        }
        return std::nullopt;
    }

private:
    bool embed(const xcb_generic_event_t &event)
    {
        if ((event.response_type & 0x7f) != XCB_CLIENT_MESSAGE)
            return false;
        const auto &message = reinterpret_cast<const xcb_client_message_event_t &>(event);
        constexpr quint32 requestDock = 0;
        if (message.type != m_atoms("_NET_SYSTEM_TRAY_OPCODE")
            || message.data.data32[1] != requestDock)
            return false;
        const xcb_window_t icon = message.data.data32[2];
        const std::array<quint32, 2> size { iconSize, iconSize };
        xcb_configure_window(m_connection, icon, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                             size.data());
        xcb_reparent_window(m_connection, icon, m_window, 0, 0);
        xcb_map_window(m_connection, icon);
        constexpr quint32 embeddedNotify = 0;
        Xcb::sendMessage(m_connection, icon, m_atoms("_XEMBED"),
                         { XCB_CURRENT_TIME, embeddedNotify, 0, m_window }, icon);
        return true;
    }

    xcb_connection_t *m_connection;
    Xcb::Atoms m_atoms;
    xcb_window_t m_window = Xcb::none;
};

/// A program in a session of its own.
class Process
{
public:
    explicit Process(std::vector<std::string> command)
    {
        std::vector<char *> arguments;
        for (std::string &argument : command)
            arguments.push_back(argument.data());
        arguments.push_back(nullptr);
        posix_spawnattr_t attributes;
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        for (const int output : { STDOUT_FILENO, STDERR_FILENO })
            posix_spawn_file_actions_addopen(&files, output, "/dev/null", O_WRONLY, 0);
        if (posix_spawnp(&m_id, arguments[0], &files, &attributes, arguments.data(), environ) != 0)
            std::perror(arguments[0]);
        posix_spawn_file_actions_destroy(&files);
        posix_spawnattr_destroy(&attributes);
    }
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;

    /// Asks it to end, so that it leaves nothing behind that slows its next start.
    ~Process()
    {
        if (m_id <= 0)
            return;
        kill(m_id, SIGTERM);
        const auto end = Clock::now() + endLimit;
        while (waitpid(m_id, nullptr, WNOHANG) == 0) {
            if (Clock::now() > end)
                kill(m_id, SIGKILL);
            std::this_thread::sleep_for(10ms);
        }
        kill(-m_id, SIGKILL); // What it started itself.
    }

    [[nodiscard]] long memory() const { return memoryOf(m_id); }

    [[nodiscard]] long sessionMemory() const
    {
        long sum = 0;
        for (const auto &entry : std::filesystem::directory_iterator("/proc")) {
            const pid_t id = static_cast<pid_t>(std::atol(entry.path().filename().c_str()));
            if (id > 0 && getsid(id) == m_id)
                sum += memoryOf(id);
        }
        return sum;
    }

private:
    static long memoryOf(pid_t id)
    {
        std::ifstream file("/proc/" + std::to_string(id) + "/smaps_rollup");
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with("Pss:"))
                return std::atol(line.c_str() + 4);
        }
        return 0;
    }

    pid_t m_id = 0;
};

std::vector<std::vector<std::string>> commands(int argc, char **argv)
{
    std::vector<std::vector<std::string>> result;
    for (int i = 3; i < argc; ++i) {
        if (std::string(argv[i]) == "--")
            result.emplace_back();
        else if (!result.empty())
            result.back().emplace_back(argv[i]);
    }
    return result;
}

}

int main(int argc, char **argv)
{
    const auto programs = commands(argc, argv);
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    if (programs.empty() || xcb_connection_has_error(connection) != 0)
        return 2;
    Tray tray(connection);
    const std::chrono::duration<double> idle(std::atof(argv[2]));
    // The first round only warms the caches.
    for (int round = 0; round <= std::atoi(argv[1]); ++round) {
        for (size_t program = 0; program < programs.size(); ++program) {
            const auto start = Clock::now();
            const Process process(programs[program]);
            const auto taken = tray.takeIcon();
            if (!taken) {
                std::fprintf(stderr, "No icon from %s.\n", programs[program][0].c_str());
                return 1;
            }
            if (round == 0)
                continue;
            std::this_thread::sleep_for(idle);
            std::printf("%zu %.3f %ld %ld\n", program,
                        std::chrono::duration<double, std::milli>(*taken - start).count(),
                        process.memory(), process.sessionMemory());
            std::fflush(stdout);
        }
    }
    xcb_disconnect(connection);
}
