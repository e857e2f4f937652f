// What was made of files, by a key, within a number of bytes: what wasn't asked for the longest goes first.

#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

namespace tarnova {

class ContentShelf {
 public:
    explicit ContentShelf(std::size_t itsLimit) : limit(itsLimit) {}

    /// What lies under the key; null for nothing. The type is the caller's knowledge: a kind of content has keys of its
    /// own.
    template <typename Content>
    [[nodiscard]] std::shared_ptr<const Content> find(const std::string& key) {
        return std::static_pointer_cast<const Content>(findAny(key));
    }
    /// Puts content on the shelf, in the place of what lay there. One larger than the limit isn't kept.
    void put(const std::string& key, std::shared_ptr<const void> content, std::size_t bytes);

    void clear();

 private:
    struct Entry {
        std::string key;
        std::shared_ptr<const void> content;
        std::size_t bytes;
    };

    [[nodiscard]] std::shared_ptr<const void> findAny(const std::string& key);
    void drop(std::list<Entry>::iterator entry);

    std::mutex guard;
    std::list<Entry> entries;  // the one asked for last in front
    std::unordered_map<std::string, std::list<Entry>::iterator> byKey;
    std::size_t total = 0;
    std::size_t limit;
};

}  // namespace tarnova
