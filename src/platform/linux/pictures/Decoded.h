#pragma once

#include "decoder/DecoderProtocol.h"

/// What a decoder process says of a job, and the memory in which it left what came of it. The
/// answers are none where it decoded nothing.
struct Decoded
{
    const DecoderProtocol::Job &job;
    const DecoderProtocol::Result &result;
    int memory = -1;
    const QByteArray &version; // Of the file.

    std::optional<PictureDecoder::Picture> picture() const;
    std::optional<QList<PictureDecoder::Frame>> frames() const;
    std::optional<PictureDecoder::Listing> listing() const;
};
