#pragma once

#include "platform/Sounds.h"

#include <vector>

class FakeSounds final : public Sounds
{
public:
    void play(Sound sound) override { played.push_back(sound); }
    std::vector<Sound> played;
};
