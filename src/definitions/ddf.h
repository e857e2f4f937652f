// DDF text, the stored form of a record definition set: a statement is its operands, then its keyword, then a
// semicolon. docs/ddf.md tells the format. Bytes are taken as they are; there is no conversion of encodings.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "definitions/record_def_set.h"
#include "engine/toolkit/files.h"

namespace tarnova {

inline constexpr std::size_t ddfBlockSize = 8192;  // bytes read at a time; a signature must stand in the first block

// Errors of reading; errNoMemoryDefinition and its kin of record_def_set.h come on top.
inline constexpr errorWord errDdfNoSignature = 108;
inline constexpr errorWord errDdfNoMemorySet = 38;
inline constexpr errorWord errDdfNoMemoryToken = 40;
inline constexpr errorWord errDdfHexNoMemory = 313;
inline constexpr errorWord errDdfHexBadCharacter = 314;
inline constexpr errorWord errDdfHexOddDigits = 315;
inline constexpr errorWord errDdfNoMemoryTokenBuffer = 318;

// Errors of writing.
inline constexpr errorWord errDdfWrite = 47;
inline constexpr errorWord errDdfGrowHandle = 135;

// Errors of whole files.
inline constexpr errorWord errDdfOpen = 45;
inline constexpr errorWord errDdfCreateTemporary = 46;
inline constexpr errorWord errDdfExchange = 106;

/// What the lexer keeps from one block to the next. Starts cleared and lives for one read; ddfReadStream frees its
/// buffers before it returns.
struct ddfLexerRec {
    char* tokenBuffer;            // the tokens of the statement under way, one behind the other
    std::size_t tokenBufferSize;  // bytes, a multiple of ddfBlockSize
    std::size_t tokenLength;      // bytes in use, those of the token under way included
    std::size_t* ddfTokenStack;   // where each finished token ends in tokenBuffer
    std::size_t tokenStackSize;   // entries
    std::size_t tokenDepth;       // finished tokens
    std::uint8_t inQuotes;
    std::uint8_t escaped;
};

/// Where the bytes come from: an open file (read from its present position), or, when `handle` isn't null, a handle,
/// whose bytes are taken out as they are read. Both stay the caller's.
struct ddfSourceRec {
    fileHandle file;
    blockHandle handle;
};

/// Where the bytes go to: an open file, a handle that grows, or both. noFile and a null handle mean that there is none.
struct ddfTargetRec {
    fileHandle file;
    blockHandle handle;
};

/// Something that was read without effect, and where.
struct ddfRemarkRec {
    std::uint32_t line;  // number of the line in which the statement begins, from 1
    std::string text;
};

inline constexpr std::size_t ddfRemarkCapacity = 1000;

/// For messages to people: where a read stopped, and what it dropped.
struct ddfReadReport {
    std::uint32_t line = 0;             // where the statement begins at which the read failed, from 1; 0: no such one
    std::uint64_t offset = 0;           // bytes from the start of the source to the end of that statement
    std::string reason;                 // what is wrong there; empty when nothing is
    std::vector<ddfRemarkRec> remarks;  // in the order of the source, the first ddfRemarkCapacity
    std::uint32_t remarksLeftOut = 0;
};

/// Reads definitions into `set`, which isn't made dirty. After an error the set holds what was read before it, and the
/// caller discards it. `report` may be null; it changes nothing of the reading. Errors: those named above, -5 when the
/// file can't be read.
[[nodiscard]] errorWord ddfReadStream(const ddfSourceRec& source, recordDefSetRec& set, ddfLexerRec& lexer,
                                      ddfReadReport* report, errorWord priorError);

/// Writes one definition; a DDF is its definitions one behind the other. Lines end with CR LF. What is read back equals
/// what was written but for line breaks in texts, which are lost. Errors: errDdfWrite, errDdfGrowHandle.
[[nodiscard]] errorWord ddfWriteDefinition(const recordDefRec& definition, const ddfTargetRec& target,
                                           errorWord priorError);

/// Writes all definitions of `set` in list order. Errors: as ddfWriteDefinition.
[[nodiscard]] errorWord ddfWriteSet(const recordDefSetRec& set, const ddfTargetRec& target, errorWord priorError);

/// Reads the file at `path` (UTF-8) into a new set of the file's name, which goes into the list of sets headed by
/// `list` and becomes `set`. After an error there is no new set and `set` is null. Errors: errDdfOpen,
/// errDdfNoMemorySet, as ddfReadStream.
[[nodiscard]] errorWord ddfReadFile(const char* path, recordDefSetRec*& list, recordDefSetRec*& set,
                                    ddfReadReport* report, errorWord priorError);

/// Writes `set` to `path` (UTF-8) through the file "rds.tmp" in the same folder, which then takes the place of the
/// target, and clears the dirty flag. After an error the target stands unchanged. Errors: errDdfCreateTemporary,
/// errDdfOpen, errDdfExchange, as ddfWriteDefinition.
[[nodiscard]] errorWord ddfWriteFile(const char* path, recordDefSetRec& set, errorWord priorError);

}  // namespace tarnova
