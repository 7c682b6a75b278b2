#pragma once

#include "platform/Motion.h"

/// How the desktop's user wants programs to look. A source of it is an
/// Observable, which announces only what differs from before.
struct DesktopLook
{
    enum class Scheme { NoPreference, Light, Dark };
    enum class Contrast { Normal, High };
    /// Who brings the colours: a desktop whose own theme the toolkit follows
    /// needs none of ours.
    enum class Colours { Toolkit, Ours };

    Scheme scheme = Scheme::NoPreference;
    Contrast contrast = Contrast::Normal;
    Motion motion = Motion::Full;
    double textScale = 1; // Beside what the toolkit scales by itself.
    Colours colours = Colours::Toolkit;

    bool operator==(const DesktopLook &) const = default;
};
