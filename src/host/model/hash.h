// Hashes of records made of numbers, strings and optional members.

#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <vector>

#include "host/model/format.h"

namespace tarnova {

class Hasher {
 public:
    template <typename Value>
    Hasher& add(const Value& value) {
        if constexpr (std::is_enum_v<Value>) {
            mix(static_cast<std::size_t>(value));
        } else {
            mix(std::hash<Value>{}(value));
        }
        return *this;
    }
    template <typename Value>
    Hasher& add(const std::optional<Value>& value) {
        mix(value.has_value());
        return value ? add(*value) : *this;
    }
    Hasher& add(const Paint& paint) { return add(paint.swatch).add(paint.tint); }
    Hasher& add(const std::vector<TabStop>& tabs) {
        for (const TabStop& tab : tabs)
            add(tab.position).add(tab.kind).add(tab.leader).add(tab.alignedOn);
        return add(tabs.size());
    }
    [[nodiscard]] std::size_t value() const { return state; }

 private:
    void mix(std::size_t bits) { state = (state ^ bits) * 0x9E3779B97F4A7C15u + (state >> 29); }
    std::size_t state = 0;
};

}  // namespace tarnova
