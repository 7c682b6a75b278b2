#include "platform/linux/pictures/Thumbnailers.h"

#include "base/MainQueue.h"
#include "base/NativeFile.h"
#include "confined/FileTree.h"
#include "platform/linux/pictures/HelperProcess.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <glib.h>

#include <csignal>
#include <utility>

#include <unistd.h>

namespace {

constexpr double longestRun = 10; // Seconds.
constexpr const char *group = "Thumbnailer Entry";

/// In the words of the entry; the first is the path of the program.
QByteArrayList commandIn(GKeyFile *file)
{
    g_autofree char *tried = g_key_file_get_string(file, group, "TryExec", nullptr);
    g_autofree char *line = g_key_file_get_string(file, group, "Exec", nullptr);
    g_auto(GStrv) words = nullptr;
    g_autofree char *found = tried ? g_find_program_in_path(tried) : nullptr;
    if ((tried && !found) || !line || !g_shell_parse_argv(line, nullptr, &words, nullptr))
        return {};
    g_autofree char *program = g_find_program_in_path(words[0]);
    if (!program)
        return {};
    QByteArrayList command { program };
    for (char **word = words + 1; *word != nullptr; ++word)
        command.append(*word);
    return command;
}

/// The fields of one word of a command.
QByteArray filled(const QByteArray &word, const Thumbnailers::Job &job, const QByteArray &output)
{
    const QHash<char, QByteArray> fields { { 'i', job.input },
                                           { 'u', job.uri },
                                           { 'o', output },
                                           { 's', QByteArray::number(job.edge) },
                                           { '%', "%" } };
    QByteArray result;
    for (qsizetype i = 0; i < word.size(); ++i) {
        if (word[i] == '%' && i + 1 < word.size())
            result += fields.value(word[++i]);
        else
            result += word[i];
    }
    return result;
}

}

struct Thumbnailers::Run
{
    Job job;
    std::function<void(const QByteArray &)> done;
    QByteArray folder {};
    std::unique_ptr<QProcess> process {};
    qint64 group = 0; // Of processes; 0 while none runs.
    Ticket limit {};
    std::function<void()> dropped {}; // Where it ran.

    ~Run()
    {
        endGroup();
        endSoon(std::move(process));
        if (!folder.isEmpty())
            NativeFile::remove(folder);
        if (dropped)
            dropped();
    }
    void endGroup()
    {
        const auto running = static_cast<pid_t>(std::exchange(group, 0));
        if (running <= 1)
            return;
        ::kill(-running, SIGKILL);
        if (process->state() != QProcess::NotRunning)
            ::kill(running, SIGKILL); // It may not have made the group yet.
    }
    QByteArray output() const { return folder + "/thumbnail.png"; }
};

Thumbnailers::Thumbnailers(QByteArrayList dataFolders, QString confined, MainQueue &queue)
    : m_dataFolders(std::move(dataFolders))
    , m_confined(std::move(confined))
    , m_queue(queue)
{
}

std::optional<QByteArrayList> Thumbnailers::commandFor(const QByteArrayList &types)
{
    if (Confined::landlockVersion() == 0)
        return std::nullopt; // Any file of the user's would be open to them.
    const std::lock_guard lock(m_mutex);
    if (!std::exchange(m_read, true)) {
        for (const QByteArray &folder : m_dataFolders) {
            const QDir entries(QFile::decodeName(folder + "/thumbnailers"));
            for (const QString &name : entries.entryList({ QStringLiteral("*.thumbnailer") })) {
                g_autoptr(GKeyFile) file = g_key_file_new();
                const QByteArray path = QFile::encodeName(entries.filePath(name));
                if (!g_key_file_load_from_file(file, path.constData(), G_KEY_FILE_NONE, nullptr))
                    continue;
                const QByteArrayList command = commandIn(file);
                g_autofree char *listed = g_key_file_get_string(file, group, "MimeType", nullptr);
                if (command.isEmpty())
                    continue;
                for (const QByteArray &type : QByteArray(listed).split(';')) {
                    if (!type.isEmpty() && !m_commands.contains(type))
                        m_commands.insert(type, command);
                }
            }
        }
    }
    for (const QByteArray &type : types) {
        if (const auto found = m_commands.constFind(type); found != m_commands.constEnd())
            return *found;
    }
    return std::nullopt;
}

Ticket Thumbnailers::run(Job job, std::function<void(const QByteArray &)> done)
{
    auto run = std::make_shared<Run>();
    run->job = std::move(job);
    run->done = std::move(done);
    m_waiting.push_back(run);
    next();
    return run;
}

void Thumbnailers::next()
{
    // Its owner may have dropped it.
    while (m_running.expired() && !m_waiting.empty()) {
        const auto run = m_waiting.front().lock();
        m_waiting.pop_front();
        if (run)
            begin(run);
    }
}

void Thumbnailers::begin(const std::shared_ptr<Run> &run)
{
    m_running = run;
    const auto weak = std::weak_ptr(run);
    const auto soon
        = [this, weak, &queue = m_queue, alive = std::weak_ptr(m_alive)](bool succeeded) {
              queue.postFor(alive, [this, weak, succeeded] {
                  if (const auto ended = weak.lock())
                      end(ended, succeeded);
              });
          };
    run->dropped = [this, &queue = m_queue, alive = std::weak_ptr(m_alive)] {
        if (!alive.expired())
            queue.postFor(alive, [this] { next(); });
    };
    QByteArray folder = QFile::encodeName(QDir::tempPath()) + "/vantle-thumbnail-XXXXXX";
    if (::mkdtemp(folder.data()) == nullptr)
        return soon(false);
    run->folder = folder;
    QStringList arguments { QFile::decodeName(run->job.input), QFile::decodeName(folder),
                            QFile::decodeName(run->job.command.constFirst()) };
    for (const QByteArray &word : run->job.command.mid(1))
        arguments.append(QFile::decodeName(filled(word, run->job, run->output())));
    run->process = std::make_unique<QProcess>();
    QProcess &process = *run->process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.setWorkingDirectory(QFile::decodeName(folder));
    process.setChildProcessModifier([] { ::setsid(); }); // One group, which ends as one.
    QObject::connect(&process, &QProcess::finished, &process,
                     [soon](int code) { soon(code == 0); });
    QObject::connect(&process, &QProcess::errorOccurred, &process,
                     [soon](QProcess::ProcessError) { soon(false); });
    run->limit = m_queue.after(longestRun, [soon] { soon(false); });
    process.start(m_confined, arguments);
    run->group = process.processId();
}

void Thumbnailers::end(const std::shared_ptr<Run> &run, bool succeeded)
{
    if (m_running.lock() != run)
        return;
    run->limit.reset();
    run->endGroup();
    run->dropped = nullptr;
    m_running.reset();
    run->done(succeeded ? run->output() : QByteArray());
    next();
}
