#pragma once

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

/// What a store holds, as plain records, and the disk below it. Entries, shelves
/// and places are numbers in the order in which they were made. The first places
/// are the user's paths; each later one is a file of the store's own.
struct ModelState
{
    static constexpr int none = -1; // The number of no entry, shelf or place.
    static constexpr int userPlaces = 6;
    using Numbers = std::set<int>;

    struct Entry
    {
        int number = none, place = none;
        double addedAt = 0;
        int bookmark = none; // The place where it was made.
        std::string preview, link;
        int index = 0; // In the list before the entry was taken from it.
    };
    using Entries = std::vector<Entry>;

    struct Shelf
    {
        int number = none;
        std::optional<std::string> name;
        bool pinned = false;
        Entries items;
        std::optional<double> closedAt;

        std::string title() const { return name.value_or("Vantle"); }
    };
    using Shelves = std::vector<Shelf>;

    struct Location
    {
        enum { Found, Trashed, Absent, Missing, Silent } outcome = Silent;
        int place = none, bookmark = none; // The bookmark is a new one.
    };

    double now = 0, uptime = 0;
    int entryCount = 0, shelfCount = 0, placeCount = userPlaces;
    Shelves shelves, closed;
    int current = none;
    Numbers uploading, selection;
    std::optional<int> focus, anchor, pressed;
    std::optional<std::tuple<int, Shelves, Shelves>> stateFile;
    bool isUnreadable = false; // The file on disk, which the next save sets aside.
    bool hasSetAside = false; // While that stands, nothing is swept.
    int notices = 0;
    std::string notice;
    struct
    {
        Numbers present, trash, silent, searching;
        std::map<int, int> moved; // From where a bookmark was made to where its file is.
    } disk;
    struct Effects // What an operation lets the outside see besides the state.
    {
        bool saved = false;
        std::string sounds; // 'P' and 'T'.
        std::vector<int> removed, restored;
        Numbers cancelled;
    } effects;

    Entries &items() { return find(shelves, current)->items; }

    static Shelf *find(Shelves &list, int number)
    {
        const auto found = std::find_if(list.begin(), list.end(),
                                        [&](const Shelf &shelf) { return shelf.number == number; });
        return found == list.end() ? nullptr : &*found;
    }

    bool exists(int place) const { return disk.present.count(place) > 0; }
    bool isSilent(int place) const { return disk.silent.count(place) > 0; }
    int bookmarkOf(int place) const { return exists(place) && !isSilent(place) ? place : none; }

    static int indexOf(const Entries &list, std::optional<int> number)
    {
        const auto found = std::find_if(list.begin(), list.end(),
                                        [&](const Entry &entry) { return entry.number == number; });
        return found == list.end() ? -1 : int(found - list.begin());
    }

    static bool hasPlace(const Entries &list, int place)
    {
        return std::any_of(list.begin(), list.end(),
                           [&](const Entry &entry) { return entry.place == place; });
    }

    static Numbers numbersOf(const Entries &list)
    {
        Numbers numbers;
        for (const Entry &entry : list)
            numbers.insert(entry.number);
        return numbers;
    }

    static Entries take(Entries &list, const Numbers &numbers)
    {
        Entries taken;
        for (int index = 0; Entry & entry : list) {
            entry.index = index++;
            if (numbers.count(entry.number))
                taken.push_back(entry);
        }
        std::erase_if(list, [&](const Entry &entry) { return numbers.count(entry.number) > 0; });
        return taken;
    }

    void save()
    {
        stateFile = { current, shelves, closed };
        effects.saved = true;
        hasSetAside = hasSetAside || std::exchange(isUnreadable, false);
    }

    void saveWithSound(char sound)
    {
        save();
        effects.sounds += sound;
    }

    void publish(const std::string &text)
    {
        ++notices;
        notice = text;
    }

    int newPlace()
    {
        disk.present.insert(placeCount);
        return placeCount++;
    }

    Entry newEntry(int place) { return { entryCount++, place, now, bookmarkOf(place), "", "", 0 }; }

    void forgetUploads(const Numbers &numbers)
    {
        for (const int number : numbers) {
            if (uploading.erase(number))
                effects.cancelled.insert(number);
        }
    }

    void deselect(const Numbers &numbers)
    {
        for (const int number : numbers)
            selection.erase(number);
    }

    void discard(const Entries &list)
    {
        for (const Entry &entry : list) {
            if (entry.place >= userPlaces)
                disk.present.erase(entry.place);
        }
    }

    int appendShelf()
    {
        std::set<std::string> titles;
        for (const Shelves &list : { shelves, closed }) {
            for (const Shelf &shelf : list)
                titles.insert(shelf.title());
        }
        int number = int(shelves.size()) + 1;
        while (titles.count("Shelf " + std::to_string(number)))
            ++number;
        shelves.push_back({ shelfCount++, "Shelf " + std::to_string(number), false, {}, {} });
        return shelves.back().number;
    }

    Location locate(const Entry &entry) const
    {
        if (isSilent(entry.place))
            return { Location::Silent };
        if (!exists(entry.place) && disk.searching.count(entry.place))
            return { Location::Missing };
        const auto inPlace = exists(entry.place) ? Location::Found : Location::Absent;
        if (entry.bookmark == none)
            return { inPlace, entry.place, bookmarkOf(entry.place) };
        const auto moved = disk.moved.find(entry.bookmark);
        const int place = moved == disk.moved.end() ? entry.bookmark : moved->second;
        if (!exists(place))
            return { inPlace, entry.place };
        if (disk.trash.count(place))
            return { Location::Trashed };
        return { Location::Found, place, place == entry.bookmark ? none : place };
    }

    /// Whether anything changed.
    static bool follow(Entry &entry, const Location &location)
    {
        if (location.outcome != Location::Found)
            return false;
        const int before = std::exchange(entry.place, location.place);
        if (location.bookmark != none)
            entry.bookmark = location.bookmark;
        return before != entry.place || location.bookmark != none;
    }

    Entries located(const Entries &list) const
    {
        Entries kept;
        for (Entry entry : list) {
            const Location location = locate(entry);
            follow(entry, location);
            if (location.outcome != Location::Trashed && location.outcome != Location::Absent)
                kept.push_back(entry);
        }
        return kept;
    }

    void load()
    {
        if (!stateFile) {
            shelves = { { shelfCount, std::nullopt, false, {}, {} } };
            current = shelfCount++;
            return;
        }
        std::tie(current, shelves, closed) = *stateFile;
        Numbers used;
        for (Shelf &shelf : shelves)
            shelf.items = located(shelf.items);
        for (const Shelves &list : { shelves, closed }) {
            for (const Shelf &shelf : list) {
                for (const Entry &entry : shelf.items)
                    used.insert(entry.place);
            }
        }
        save();
        const auto isMissing
            = [&](int place) { return place >= userPlaces && !disk.present.count(place); };
        if (hasSetAside || std::any_of(used.begin(), used.end(), isMissing))
            return;
        std::erase_if(disk.present,
                      [&](int place) { return place >= userPlaces && !used.count(place); });
    }
};
