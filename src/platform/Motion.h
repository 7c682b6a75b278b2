#pragma once

/// Whether the desktop's user wants things to move.
enum class Motion { Full, Reduced };
