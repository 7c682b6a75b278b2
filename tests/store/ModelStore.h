#pragma once

#include "ModelSelection.h"

/// What the store must do, said as plainly as it can be said.
class ModelStore : public ModelSelection
{
public:
    // Adding.

    void add(const std::vector<int> &places)
    {
        const auto before = items().size();
        for (const int place : places) {
            if (place != none && !hasPlace(items(), place))
                items().push_back(newEntry(place));
        }
        if (items().size() != before)
            saveWithSound('P');
    }

    void addText(const std::string &preview) { insert(newPlace(), preview, ""); }

    void addLink(const std::string &link, const std::string &title)
    {
        if (std::none_of(items().begin(), items().end(),
                         [&](const Entry &entry) { return entry.link == link; }))
            insert(newPlace(), title, link);
    }

    // Removing.

    void remove(const Numbers &numbers)
    {
        const Entries removed = take(items(), numbers);
        if (removed.empty())
            return;
        forgetUploads(numbers);
        deselect(numbers);
        saveWithSound('T');
        commitRemoval();
        m_stash = removed;
        m_stashShelf = current;
        m_purgeAt = uptime + 60;
        for (const Entry &entry : removed)
            effects.removed.push_back(entry.number);
        publish((removed.size() == 1 ? "one" : std::to_string(removed.size())) + " removed");
    }

    void removeUrls(const Numbers &places, const std::set<std::string> &links)
    {
        Numbers numbers;
        for (const Entry &entry : items()) {
            if (places.count(entry.place) || links.count(entry.link))
                numbers.insert(entry.number);
        }
        remove(numbers);
    }

    void clear()
    {
        Numbers everything = numbersOf(items());
        if (everything.empty())
            return;
        everything.insert(uploading.begin(), uploading.end());
        selection.clear();
        anchor.reset();
        remove(everything);
    }

    bool undo()
    {
        if (m_stash.empty())
            return false;
        m_purgeAt.reset();
        switchTo(m_stashShelf);
        for (const Entry &entry : std::exchange(m_stash, {})) {
            // A file system that does not answer proves nothing.
            if (hasPlace(items(), entry.place) || !(exists(entry.place) || isSilent(entry.place)))
                continue;
            items().insert(items().begin() + std::min(entry.index, int(items().size())), entry);
            effects.restored.push_back(entry.number);
        }
        if (effects.restored.empty())
            return false;
        saveWithSound('P');
        publish(std::to_string(effects.restored.size()) + " restored");
        return true;
    }

    void prune(double maxAge)
    {
        if (maxAge <= 0)
            return;
        Entries expired;
        const auto takeFrom = [&](Shelf &shelf) {
            Numbers old;
            for (const Entry &entry : shelf.items) {
                if (!shelf.pinned && entry.addedAt < now - maxAge && !uploading.count(entry.number))
                    old.insert(entry.number);
            }
            const Entries taken = take(shelf.items, old);
            expired.insert(expired.end(), taken.begin(), taken.end());
            return !taken.empty();
        };
        for (Shelf &shelf : shelves) {
            if (shelf.number != current)
                takeFrom(shelf);
        }
        if (takeFrom(*find(shelves, current)))
            std::erase_if(selection, [&](int number) { return indexOf(items(), number) < 0; });
        if (expired.empty())
            return;
        discard(expired);
        for (const Entry &entry : expired)
            effects.removed.push_back(entry.number);
        save();
    }

    // Shelves.

    void switchTo(int number)
    {
        if (number == current || !find(shelves, number))
            return;
        current = number;
        deselectAll();
        pressed.reset();
        save();
        refresh();
    }

    void newShelf() { switchTo(appendShelf()); }

    void rename(int number, const std::string &name)
    {
        if (Shelf *shelf = find(shelves, number); shelf && !name.empty()) {
            shelf->name = name;
            save();
        }
    }

    void togglePin(int number)
    {
        if (Shelf *shelf = find(shelves, number)) {
            shelf->pinned = !shelf->pinned;
            save();
        }
    }

    void close(int number)
    {
        const Shelf *shelf = find(shelves, number);
        if (!shelf || shelves.size() < 2)
            return;
        const auto index = shelf - shelves.data();
        if (number == current)
            switchTo(shelves[index + 1 < int(shelves.size()) ? index + 1 : index - 1].number);
        Shelf leaving = shelves[index];
        shelves.erase(shelves.begin() + index);
        if (!leaving.items.empty()) {
            forgetUploads(numbersOf(leaving.items));
            leaving.closedAt = now;
            closed.insert(closed.begin(), leaving);
            if (closed.size() > 5) {
                discard(closed.back().items);
                closed.pop_back();
            }
            publish(leaving.title() + " closed");
        }
        save();
    }

    void reopen(int number)
    {
        const Shelf *found = find(closed, number);
        if (!found)
            return;
        Shelf shelf = *found;
        closed.erase(closed.begin() + (found - closed.data()));
        shelf.closedAt.reset();
        shelf.items = located(shelf.items);
        shelves.push_back(shelf);
        switchTo(number);
    }

    /// To a new shelf without a destination.
    void move(const Numbers &numbers, std::optional<int> destination)
    {
        Entries rest = items();
        const Entries moving = take(rest, numbers);
        if (moving.empty())
            return;
        const int number = destination ? *destination : appendShelf();
        Shelf *target = find(shelves, number);
        if (!target || number == current)
            return;
        const Entries before = target->items;
        for (const Entry &entry : moving) {
            if (!hasPlace(before, entry.place))
                target->items.push_back(entry);
        }
        items() = rest;
        deselect(numbers);
        saveWithSound('P');
        publish("moved to " + target->title());
    }

    // Work on other threads, time and the process.

    void addImage() { m_jobs.push_back({}); }

    void refresh()
    {
        if (m_refreshing || items().empty())
            return;
        m_refreshing = true;
        m_jobs.push_back({ items(), {}, uptime });
    }

    int jobCount() const { return int(m_jobs.size()); }

    /// The worker's side only; its result waits.
    void runJob(int index)
    {
        Job job = m_jobs[index];
        m_jobs.erase(m_jobs.begin() + index);
        if (job.checked.empty())
            job.image = newPlace();
        for (const Entry &entry : job.checked)
            job.locations.push_back(locate(entry));
        m_results.push_back(job);
    }

    void deliver()
    {
        for (const Job &job : std::exchange(m_results, {}))
            job.checked.empty() ? insert(job.image, "", "") : applyLocations(job);
    }

    void advance(double seconds)
    {
        deliver();
        now += seconds;
        uptime += seconds;
        if (m_purgeAt && *m_purgeAt <= uptime)
            commitRemoval();
    }

    /// As after a kill.
    enum class StateFile { Whole, Unreadable, Cleared };
    void restart(StateFile file)
    {
        ModelStore next;
        std::tie(next.now, next.uptime, next.disk) = std::tie(now, uptime, disk);
        std::tie(next.entryCount, next.shelfCount, next.placeCount)
            = std::tie(entryCount, shelfCount, placeCount);
        next.isUnreadable = isUnreadable || file == StateFile::Unreadable;
        next.hasSetAside = hasSetAside && file != StateFile::Cleared;
        if (file != StateFile::Unreadable)
            next.stateFile = stateFile;
        *this = next;
        load();
    }

private:
    struct Job // A check, or an image to be written if there is nothing to check.
    {
        Entries checked;
        std::vector<Location> locations;
        double begin = 0;
        int image = none;
    };

    void insert(int place, const std::string &preview, const std::string &link)
    {
        if (hasPlace(items(), place))
            return;
        items().push_back(newEntry(place));
        items().back().preview = preview;
        items().back().link = link;
        saveWithSound('P');
    }

    void commitRemoval()
    {
        discard(std::exchange(m_stash, {}));
        m_purgeAt.reset();
    }

    void applyLocations(const Job &job)
    {
        m_refreshing = false;
        Numbers gone;
        bool changed = false;
        const auto before = std::exchange(m_missed, {});
        for (int i = 0; i < int(job.checked.size()); ++i) {
            const auto &[number, place] = std::pair(job.checked[i].number, job.checked[i].place);
            const auto outcome = job.locations[i].outcome;
            bool leaves = outcome == Location::Trashed;
            if (outcome == Location::Absent || outcome == Location::Missing) {
                const auto first = before.find({ number, place });
                const double since = first == before.end() ? uptime : first->second;
                leaves = outcome == Location::Absent && job.begin - since >= 2;
                if (!leaves)
                    m_missed[{ number, place }] = since;
            }
            const int index = indexOf(items(), number);
            if (index < 0 || items()[index].place != place)
                continue;
            if (leaves)
                gone.insert(number);
            changed = follow(items()[index], job.locations[i]) || changed;
        }
        if (!changed && gone.empty())
            return;
        forgetUploads(gone);
        deselect(gone);
        take(items(), gone);
        save();
    }

    Entries m_stash;
    int m_stashShelf = none;
    std::optional<double> m_purgeAt;
    bool m_refreshing = false;
    std::vector<Job> m_jobs, m_results;
    std::map<std::pair<int, int>, double> m_missed; // By entry and place: when it was missed.
};
