#pragma once

#include "platform/DragSelection.h"

class FakeDragSelection final : public DragSelection
{
public:
    int changeCount() const override
    {
        ++reads;
        return m_changeCount;
    }
    bool holdsFileUrls() const override { return m_holdsFileUrls; }

    /// A source announces a drag that has not yet said what it carries.
    void announce()
    {
        ++m_changeCount;
        m_holdsFileUrls = false;
    }
    void answer(bool holdsFiles)
    {
        m_holdsFileUrls = holdsFiles;
        if (onAnswer)
            onAnswer();
    }

    mutable int reads = 0;

private:
    int m_changeCount = 7;
    bool m_holdsFileUrls = true; // Of a drag long ago.
};
