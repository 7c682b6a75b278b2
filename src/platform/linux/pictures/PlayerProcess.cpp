#include "platform/linux/pictures/PlayerProcess.h"

#include "base/FilePath.h"
#include "base/MainQueue.h"
#include "base/NativeFile.h"
#include "platform/linux/files/FileLanes.h"
#include "platform/linux/pictures/HelperProcess.h"

#include <utility>

#include <unistd.h>

namespace {

/// Copied out, so that nobody can change it, or cut it off, while it is painted.
QImage pictureIn(int memory, const QSize &size)
{
    if (size.isEmpty())
        return {};
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    const qsizetype bytes = image.sizeInBytes();
    if (image.isNull() || ::pread(memory, image.bits(), static_cast<size_t>(bytes), 0) != bytes)
        return {};
    return image;
}

}

PlayerProcess::PlayerProcess(QString program, const QUrl &url, FileLanes &lanes, MainQueue &queue)
    : m_program(std::move(program))
    , m_queue(queue)
{
    const QByteArray path = FilePath::fromUrl(url);
    lanes.look(
        path, queue, m_alive,
        [path] { return std::make_shared<Descriptor>(NativeFile::open(path)); },
        [this](const std::shared_ptr<Descriptor> &file) { begin(*file); });
}

PlayerProcess::~PlayerProcess() = default;

void PlayerProcess::begin(const Descriptor &file)
{
    if (!file)
        return fail();
    m_process = std::make_unique<HelperProcess>(m_program);
    m_process->onMessage = [this](const QByteArray &message) { return hear(message); };
    m_process->onEnd = [this](HelperProcess::End) { fail(); };
    m_memory = HelperProcess::makeMemory(PlayerProtocol::mostBytes);
    if (!m_memory
        || !m_process->give(DecoderProtocol::encode(Command { Command::Kind::Open, 0, m_room }),
                            { file.number(), m_memory.number() }))
        fail();
}

void PlayerProcess::tell(const Command &command)
{
    if (m_process)
        m_process->give(DecoderProtocol::encode(command));
}

void PlayerProcess::seek(double seconds)
{
    tell({ Command::Kind::Seek, static_cast<qint32>(seconds * 1000), {} });
}

void PlayerProcess::setRoom(const QSize &room)
{
    if (std::exchange(m_room, room) != room)
        tell({ Command::Kind::Room, 0, room });
}

bool PlayerProcess::hear(const QByteArray &message)
{
    const auto event = PlayerProtocol::decodeEvent(message);
    const bool isPicture = event && event->kind == Event::Kind::Picture;
    const QImage picture = isPicture ? pictureIn(m_memory.number(), event->size) : QImage();
    if (!event || (isPicture && picture.isNull()))
        return false;
    switch (event->kind) {
    case Event::Kind::Opened:
        onOpened({ event->flag != 0, event->size });
        break;
    case Event::Kind::Picture:
        tell({ Command::Kind::Taken, 0, {} });
        onPicture(picture);
        break;
    case Event::Kind::State:
        onState({ event->flag != 0, static_cast<double>(event->position) / 1000,
                  static_cast<double>(event->duration) / 1000 });
        break;
    case Event::Kind::Failed:
        fail();
        break;
    }
    return true;
}

/// Not at once: the process is still telling, and may go with who hears of it.
void PlayerProcess::fail()
{
    m_queue.postFor(m_alive, [this] {
        if (!onFailed)
            return;
        m_process.reset();
        std::exchange(onFailed, nullptr)();
    });
}
