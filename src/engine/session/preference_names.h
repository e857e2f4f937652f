// The names of the preferences' fields, for programs that read and set them by name.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "engine/session/preferences.h"

namespace tarnova {

enum class preferenceType : std::uint8_t { u8, i16, u16, i32, u32, pascal, text };

struct preferenceField {
    std::string_view name;
    std::size_t offset;
    preferenceType type;
    std::size_t size;  // bytes
};

/// The fields that hold one number or text, in order of offset.
[[nodiscard]] std::span<const preferenceField> preferenceFields();

/// The field of that name; or, for a name such as "8627:u8", the bytes there as that type of number. An empty `name` in
/// the result: there is no such field, or the bytes lie outside the record.
[[nodiscard]] preferenceField findPreference(std::string_view name);

}  // namespace tarnova
