#pragma once

#include "ModelState.h"

/// What clicks, arrow keys and drags do.
struct ModelSelection : ModelState
{
    enum class Click { Plain, Shift, Command };
    void click(int number, Click kind)
    {
        focus = number;
        const int from = indexOf(items(), anchor);
        const int to = indexOf(items(), number);
        if (kind == Click::Shift && from >= 0 && to >= 0) {
            selectRange(from, to);
            return;
        }
        anchor = number;
        if (kind != Click::Command)
            selection = { number };
        else if (!selection.erase(number))
            selection.insert(number);
    }

    void moveSelection(int step, bool extend)
    {
        const int count = int(items().size());
        if (count == 0)
            return;
        int start = indexOf(items(), focus);
        if (start < 0)
            start = step < 1 ? count : -1;
        const int target = std::min(std::max(start + step, 0), count - 1);
        const int from = extend ? indexOf(items(), anchor) : -1;
        focus = items()[target].number;
        if (from < 0)
            anchor = focus;
        selectRange(from < 0 ? target : from, target);
    }

    void selectAll() { selection = numbersOf(items()); }

    void deselectAll()
    {
        selection.clear();
        anchor.reset();
        focus.reset();
    }

    /// What a drag from the pressed row carries.
    std::optional<Entries> dragged()
    {
        const int row = indexOf(items(), pressed);
        if (row < 0)
            return std::nullopt;
        Entries rest = items();
        const bool alone = selection.size() < 2 || !selection.count(*pressed);
        return take(rest, alone ? Numbers { *pressed } : selection);
    }

    void selectRange(int from, int to)
    {
        selection.clear();
        for (int row = std::min(from, to); row <= std::max(from, to); ++row)
            selection.insert(items()[row].number);
    }
};
