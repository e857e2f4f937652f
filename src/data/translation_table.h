// Translation tables: text files that map bytes to bytes or take them away, to repair text from other character sets.
// A definition names one for what is read and one for what is written; docs/translation-tables.md tells the format.
// The mapping knows nothing of encodings: in UTF-8 it sees the single bytes of a character.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/toolkit/pstring.h"
#include "engine/toolkit/types.h"

namespace tarnova {

struct recordDefRec;

inline constexpr std::size_t transTableLineBytes = 255;  // of a line at most, its end left out
inline constexpr std::size_t transTableFileBytes = std::size_t{16} << 20;

// Results of a load.
inline constexpr std::int16_t transTableLoaded = 0;
inline constexpr std::int16_t transTableMissing = 2;
inline constexpr std::int16_t transTableUnreadable = -1;

/// One table in memory; the session has two.
struct transTableRec {
    std::uint8_t map[256];    // the byte that an incoming one turns into
    std::uint8_t keep[256];   // 1: the byte stays, in its mapped form; 0: it is removed
    Str255 tableName;         // empty: no table is in force
    std::uint32_t tableDate;  // of the file when it was loaded, seconds since 1970; 0 none
};

/// No table: every byte stays as it is.
[[nodiscard]] constexpr transTableRec identityTransTable() {
    transTableRec table{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        table.map[byte] = static_cast<std::uint8_t>(byte);
        table.keep[byte] = 1;
    }
    return table;
}

/// Brings the table of that name into force; an empty name, no table. Nothing is read when name and date are those of
/// the table in force. transTableMissing when there is no such file: then every byte stays. A line that can't be read
/// is shown with its number and costs the whole table, and the result is transTableLoaded all the same.
[[nodiscard]] std::int16_t loadImportTable(const std::uint8_t* name);
[[nodiscard]] std::int16_t loadExportTable(const std::uint8_t* name);

/// Both tables of a definition; one whose flag is off is none. Errors: errImportTranslation, errExportTranslation.
[[nodiscard]] errorWord loadTablesOf(const recordDefRec& definition, errorWord priorError);

/// Reads the text of a table over `table`, whose name and date stay. 0, or the number of the line that can't be read,
/// from 1, with `table` half changed.
[[nodiscard]] std::uint32_t readTransTable(std::string_view text, transTableRec& table);

/// Maps `bytes` in place and may shorten `length`; without a table in force nothing happens.
void applyImportTable(std::uint8_t* bytes, std::uint32_t& length);
void applyExportTable(std::uint8_t* bytes, std::uint32_t& length);

/// Path of a table's file, in the folder "TransTable" beside the index files, which is made when it is missing; an
/// absolute name stands for itself. `folderCreated` may be null. transTableMissing when there is no such file.
[[nodiscard]] std::int16_t transTablePath(const std::uint8_t* name, std::string& path, bool* folderCreated);

/// Writes a table that maps each byte to itself, with directions for people, when the folder of the tables had to be
/// made. A file that can't be written is no error: the next start finds the folder and leaves it alone.
[[nodiscard]] errorWord writeTransTableTemplate(errorWord priorError);

}  // namespace tarnova
