#pragma once

#include "platform/FrontApplication.h"

class FakeFrontApplication final : public FrontApplication
{
public:
    QString identifier() const override
    {
        ++reads;
        return current;
    }
    QString current;
    mutable int reads = 0;
};
