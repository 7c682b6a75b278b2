#pragma once

/// The small signals of the program.
enum class Sound {
    Pop, // Something came: added, moved, restored.
    Tink, // Something went: removed; copied.
    Beep, // Refused.
};

class Sounds
{
public:
    virtual ~Sounds() = default;
    /// Returns at once; silence is no error.
    virtual void play(Sound sound) = 0;
};
