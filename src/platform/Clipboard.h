#pragma once

#include "platform/Address.h"
#include "platform/DropTarget.h"

/// What users copy and paste. Main thread.
class Clipboard
{
public:
    virtual ~Clipboard() = default;

    /// Begins to ask for what is there; false, and nothing more happens, where the
    /// clipboard is empty. The completion comes later, once at most: with an object
    /// for each file if there are files, else with one object in all its forms, and
    /// with none if its owner does not answer in time. A file that was cut is a file
    /// like any other.
    virtual bool read(std::function<void(const ItemProviders &)> completion) = 0;

    /// Puts these there together: files as copied files, everything as text. It
    /// outlives the program where the desktop has a clipboard manager.
    virtual void write(const QList<Address> &urls) = 0;

    /// The same as text alone: a path or an address a line.
    virtual void writeText(const QList<Address> &urls) = 0;
};
