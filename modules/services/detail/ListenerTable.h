#pragma once

#include <algorithm>
#include <initializer_list>
#include <map>
#include <vector>

#include "tvk/platform/CString.h"

namespace tvk::services {

/// Listeners under texts, and the passes over them. Under one text they stand in the order of
/// addition, each as often as it was added.
///
/// A pass calls the entries that were there when it began and still are when their turn comes: one
/// that is removed and added again is a new entry, and waits for the next pass. Passes may run inside
/// one another.
template <class Listener>
class ListenerTable {
public:
    void add(CString const & text, Listener * listener) {
        entries_[text].push_back({++lastTicket_, listener});
    }

    bool has(CString const & text, Listener const * listener) const {
        auto const found = entries_.find(text);
        return found != entries_.end() && place(found->second, listener) != found->second.end();
    }

    /// The first entry of `listener` under exactly this text; false where there is none.
    bool remove(CString const & text, Listener const * listener) {
        auto const found = entries_.find(text);
        if (found == entries_.end()) {
            return false;
        }
        auto const entry = place(found->second, listener);
        if (entry == found->second.end()) {
            return false;
        }
        found->second.erase(entry);
        if (found->second.empty()) {
            entries_.erase(found);
        }
        return true;
    }

    void clear() { entries_.clear(); }

    std::vector<Listener *> all(CString const & text) const {
        std::vector<Listener *> listeners;
        auto const found = entries_.find(text);
        if (found != entries_.end()) {
            for (Entry const & entry : found->second) {
                listeners.push_back(entry.listener);
            }
        }
        return listeners;
    }

    /// Calls `call` with the listeners of one text after the other, as long as `goesOn`.
    template <class Condition, class Call>
    void pass(std::initializer_list<CString> texts, Condition const & goesOn,
              Call const & call) const {
        Ticket const newest = lastTicket_;
        for (CString const & text : texts) {
            Entry const * entry = next(text, 0);
            while (entry != nullptr && entry->ticket <= newest && goesOn()) {
                Ticket const called = entry->ticket;
                call(*entry->listener);
                entry = next(text, called);
            }
        }
    }

private:
    using Ticket = unsigned long long;
    struct Entry {
        Ticket ticket;  // from 1 on, in the order of addition
        Listener * listener;
    };
    using Entries = std::vector<Entry>;

    template <class SomeEntries>
    static auto place(SomeEntries & entries, Listener const * listener) {
        return std::find_if(entries.begin(), entries.end(),
                            [&](Entry const & entry) { return entry.listener == listener; });
    }

    /// The first entry behind the one with that ticket, or null.
    Entry const * next(CString const & text, Ticket behind) const {
        auto const found = entries_.find(text);
        if (found == entries_.end()) {
            return nullptr;
        }
        auto const entry =
            std::upper_bound(found->second.begin(), found->second.end(), behind,
                             [](Ticket left, Entry const & right) { return left < right.ticket; });
        return entry == found->second.end() ? nullptr : &*entry;
    }

    std::map<CString, Entries> entries_;
    Ticket lastTicket_ = 0;
};

}  // namespace tvk::services
