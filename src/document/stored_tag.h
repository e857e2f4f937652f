// The bytes of a stored tag record: a header and named fields, all numbers big-endian. What the fields mean is the
// business of those who write and read them.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarnova {

inline constexpr std::uint16_t storedTagVersion = 1;
inline constexpr std::size_t storedTagHeaderBytes = 8;
inline constexpr std::size_t storedTagCapacity = 16384;  // bytes of a whole record
inline constexpr std::size_t storedTagNameBytes = 5;
inline constexpr std::size_t storedTagFieldHeaderBytes = 8;  // size word, length of the name, name

// Names of the fields, in the order in which they are written.
inline constexpr std::string_view fieldLocked = "lk.r1";
inline constexpr std::string_view fieldAssociate = "am.r1";
inline constexpr std::string_view fieldKey = "ky.r1";
inline constexpr std::string_view fieldCriteria = "sc.r1";
inline constexpr std::string_view fieldLink = "er.r1";
inline constexpr std::string_view fieldRule = "rl.r1";
inline constexpr std::string_view fieldStyle = "sr.r1";
inline constexpr std::string_view fieldNotes[3] = {"m1.r1", "m2.r1", "m3.r1"};
inline constexpr std::string_view fieldAuxKeys = "ak.r1";
// Names that are read and never written: two strings, and a field that is passed over.
inline constexpr std::string_view fieldMediaString = "ms.r1";
inline constexpr std::string_view fieldMediaPath = "mp.r1";
inline constexpr std::string_view fieldPassedOver = "cn.r1";

/// Puts a record together field by field.
class StoredTagWriter {
 public:
    /// The stored kind is the tag's kind (0 to 2) twice, and one more when the link is locked.
    StoredTagWriter(std::uint16_t tagKind, bool locked);
    /// A field with its bytes as they stand. `name` has five characters.
    void field(std::string_view name, std::string_view payload);
    /// A field with a string of up to 255 bytes, whose length goes first.
    void stringField(std::string_view name, std::string_view text);
    /// The record; nothing when it would not fit into `storedTagCapacity` or a string was too long.
    [[nodiscard]] std::optional<std::string> finish() const;

 private:
    std::string bytes;
    bool fits = true;
};

struct StoredTagField {
    std::string_view name;
    std::string_view payload;
};

/// Walks the fields of a record; the bytes may be anything.
class StoredTagReader {
 public:
    /// The record must outlive the reader.
    explicit StoredTagReader(std::string_view record);
    /// The record has a header whose length is its own and whose version is known.
    [[nodiscard]] bool headerIsGood() const { return good; }
    [[nodiscard]] std::uint16_t storedKind() const { return kind; }
    /// The next field, whatever its name; nothing at the record's end, and at a field that isn't whole (`atEnd` then is
    /// false).
    [[nodiscard]] std::optional<StoredTagField> next();
    [[nodiscard]] bool atEnd() const { return left.empty(); }

 private:
    std::string_view left;
    std::uint16_t kind = 0;
    bool good = false;
};

}  // namespace tarnova
