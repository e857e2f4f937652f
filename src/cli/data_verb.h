// `tarnova data`: what a delimited text file holds, one value of it, and its index; and data files of numbers.

#pragma once

#include <cstdint>
#include <string>

namespace tarnova {

struct dataVerbRec {
    std::string path;
    std::string delimiter;  // a name or one character; empty: found out
    std::string qualifier;  // a name or one character; empty: found out
    std::string encoding;   // a name; empty: found out
    bool noHeader = false;  // the first line is a record
    std::string keyField;   // empty: the first field
    std::string field;      // empty: all fields
    std::string key;
    std::uint32_t record = 0;  // from 1, behind the header; 0: by key
    bool json = false;
};

/// A data file of running numbers.
struct numberVerbRec {
    std::string outputPath;
    std::int32_t start = 1;
    std::int32_t end = 0;
    std::int32_t width = 0;  // digits at least
    std::string prefix;
    std::string suffix;
    std::string pad = "0";
};

// Each gives the program's exit status, after telling on standard error what went wrong.

/// Prints how a file is read and what it holds.
[[nodiscard]] int inspectData(const dataVerbRec& options);

/// Prints the fields of one record, or one of them.
[[nodiscard]] int getData(const dataVerbRec& options);

/// Builds a file's index and says where it is and how big.
[[nodiscard]] int indexData(const dataVerbRec& options);

/// Writes the file.
[[nodiscard]] int makeNumbers(const numberVerbRec& options);

}  // namespace tarnova
