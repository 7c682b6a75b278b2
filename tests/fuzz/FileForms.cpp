#include "FileForms.h"

#include "base/FilePath.h"
#include "platform/linux/files/BookmarkCoding.h"
#include "store/StateCoding.h"
#include "store/StateEncoder.h"
#include "store/UploadCoding.h"
#include "store/WebLocation.h"

#include <algorithm>

namespace {

using FileForms::Verdict;

Verdict verdict(bool holds)
{
    return holds ? Verdict::Kept : Verdict::Broken;
}

/// Compares what was written, since Qt calls some addresses unequal that differ in
/// nothing but how they were given.
bool comesBack(const ShelfState &state)
{
    const QByteArray written = StateCoding::encode(state);
    const auto again = StateCoding::decodeState(written);
    return again && StateCoding::encode(*again) == written;
}

/// An encoder that wrote the state before must write a changed one as a new one does.
bool encodesAgain(ShelfState state)
{
    StateEncoder encoder;
    encoder.encode(state);
    std::reverse(state.shelves.begin(), state.shelves.end());
    for (Shelf &shelf : state.shelves)
        std::reverse(shelf.items.begin(), shelf.items.end());
    return encoder.encode(state).join() == StateCoding::encode(state);
}

/// The paths that a start takes out of the addresses never hold what ends a name.
bool hasSafePaths(const ShelfState &state)
{
    for (const Shelf &shelf : state.shelves + state.closed) {
        for (const ShelfItem &item : shelf.items) {
            const QByteArray path = FilePath::fromUrl(item.url);
            if (path.contains('\0') || (!path.isEmpty() && !path.startsWith('/')))
                return false;
        }
    }
    return true;
}

}

Verdict FileForms::shelves(const QByteArray &bytes)
{
    if (const auto items = StateCoding::decodeItems(bytes)) {
        const ShelfState state { {}, { { QUuid::createUuid(), {}, false, *items, {} } }, {} };
        return verdict(comesBack(state));
    }
    const auto state = StateCoding::decodeState(bytes);
    if (!state)
        return Verdict::Refused;
    return verdict(comesBack(*state) && encodesAgain(*state) && hasSafePaths(*state));
}

Verdict FileForms::uploads(const QByteArray &bytes)
{
    const auto records = UploadCoding::decode(bytes);
    if (!records)
        return Verdict::Refused;
    return verdict(UploadCoding::decode(UploadCoding::encode(*records)) == records);
}

Verdict FileForms::bookmark(const QByteArray &bytes)
{
    const auto record = BookmarkCoding::decode(bytes);
    return record ? verdict(BookmarkCoding::encode(*record) == bytes) : Verdict::Refused;
}

Verdict FileForms::webloc(const QByteArray &bytes)
{
    const auto url = WebLocation::decode(bytes);
    if (!url)
        return Verdict::Refused;
    const auto again = WebLocation::decode(WebLocation::encode(*url));
    return verdict(again && again->toEncoded() == url->toEncoded() && !url->isRelative());
}
