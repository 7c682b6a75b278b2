// Decodes files for the program, one after the other, until the program is gone. It gets each as an
// open file and gives pixels back; whatever a hostile file makes of it stays in here.
#include "confined/Confinement.h"
#include "decoder/Decoded.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace {

using namespace DecoderProtocol;

constexpr size_t mostMemory = 2048UL << 20; // Libraries take 300 MB of it.

Decoded work(const Job &job, int file, int descriptor)
{
    if (file < 0 || job.maxPixel < 0 || job.number < 0)
        return std::nullopt;
    SharedMemory memory(descriptor, mostBytes(job));
    switch (job.kind) {
    case Job::Kind::Image:
    case Job::Kind::Whole:
        if (auto decoded = Decode::image(file, job, memory))
            return decoded;
        return Decode::otherImage(file, job, memory);
    case Job::Kind::Page:
        return Decode::page(file, job.number, job.maxPixel, memory);
    case Job::Kind::Frames:
        return Decode::frames(file, job, memory);
    case Job::Kind::Archive:
        return Decode::archive(file, memory);
    }
    return std::nullopt;
}

}

int main()
{
    using namespace Confined;
    closeOthers(socketDescriptor); // Of the program's own files and sockets nothing is in reach.
    std::setlocale(LC_CTYPE, "C.UTF-8"); // In which names are read from archives.
    bool confined = limit({ .memory = mostMemory }) && shutFileTree({}, Opening::For::Reading);
    if (confined) {
        Decode::begin();
        confined = allowOnly(Calls::Decoding);
    }
    if (!confined) {
        std::fputs("vantle-decoder: cannot be confined, decodes nothing\n", stderr);
        return unableStatus;
    }
    for (;;) {
        const auto received = receive(socketDescriptor);
        if (!received || received->message.isEmpty())
            std::_Exit(EXIT_SUCCESS); // Nothing of it has to be tidied up.
        const auto job = decode<Job>(received->message);
        const auto [file, memory] = received->files;
        const auto decoded = job ? work(*job, file, memory) : std::nullopt;
        for (const int open : received->files) {
            if (open >= 0)
                ::close(open);
        }
        if (!send(socketDescriptor, encode(decoded.value_or(Result()))))
            std::_Exit(EXIT_SUCCESS);
    }
}
