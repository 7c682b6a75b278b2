// Decodes files for the program, one after the other, until the program is gone. It gets each as an
// open file and gives pixels back; whatever a hostile file makes of it stays in here.
#include "decoder/Confinement.h"
#include "decoder/Decoded.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace {

using namespace DecoderProtocol;

std::optional<Decoded> work(const Job &job, int file)
{
    if (file < 0 || job.maxPixel < 0 || job.number < 0)
        return std::nullopt;
    switch (job.kind) {
    case Job::Kind::Image:
        if (auto decoded = Decode::image(file, job.maxPixel))
            return decoded;
        return Decode::otherImage(file, job.maxPixel);
    case Job::Kind::Page:
        return Decode::page(file, job.number, job.maxPixel);
    case Job::Kind::Frames:
        return Decode::frames(file, job.number, job.maxPixel);
    case Job::Kind::Archive:
        return Decode::archive(file);
    }
    return std::nullopt;
}

}

int main()
{
    // Of the program's own files and sockets nothing is to be in reach.
    ::close_range(STDERR_FILENO + 1, socketDescriptor - 1, 0);
    ::close_range(socketDescriptor + 1, ~0U, 0);
    std::setlocale(LC_CTYPE, "C.UTF-8"); // In which names are read from archives.
    Decode::begin();
    if (!confine()) {
        std::fputs("vantle-decoder: cannot be confined, decodes nothing\n", stderr);
        return unableStatus;
    }
    for (;;) {
        const auto received = receive(socketDescriptor);
        if (!received || received->message.isEmpty())
            std::_Exit(EXIT_SUCCESS); // Nothing of it has to be tidied up.
        const auto job = decodeJob(received->message);
        const auto decoded = job ? work(*job, received->descriptor) : std::nullopt;
        if (received->descriptor >= 0)
            ::close(received->descriptor);
        if (decoded)
            decoded->memory.seal();
        if (!send(socketDescriptor, encode(decoded ? decoded->result : Result()),
                  decoded ? decoded->memory.descriptor() : -1))
            std::_Exit(EXIT_SUCCESS);
    }
}
