#include "host/pictures/content_shelf.h"

#include <utility>

namespace tarnova {

std::shared_ptr<const void> ContentShelf::findAny(const std::string& key) {
    const std::lock_guard lock(guard);
    const auto found = byKey.find(key);
    if (found == byKey.end()) return nullptr;
    entries.splice(entries.begin(), entries, found->second);
    return found->second->content;
}

void ContentShelf::put(const std::string& key, std::shared_ptr<const void> content, std::size_t bytes) {
    const std::lock_guard lock(guard);
    if (const auto found = byKey.find(key); found != byKey.end()) drop(found->second);
    if (bytes > limit) return;
    entries.push_front({key, std::move(content), bytes});
    byKey[key] = entries.begin();
    total += bytes;
    while (total > limit)
        drop(std::prev(entries.end()));
}

void ContentShelf::clear() {
    const std::lock_guard lock(guard);
    byKey.clear();
    entries.clear();
    total = 0;
}

void ContentShelf::drop(std::list<Entry>::iterator entry) {
    total -= entry->bytes;
    byKey.erase(entry->key);
    entries.erase(entry);
}

}  // namespace tarnova
