// Small records that the preferences hold as parts. Multi-byte numbers are little-endian in the file.

#pragma once

#include <cstddef>
#include <cstdint>

#include "engine/toolkit/pstring.h"

namespace tarnova {

/// A file type and the extension of its files.
struct fileExtensionRec {
    std::uint32_t fileType;     // 0: a free entry
    std::uint8_t extension[8];  // Pascal string of up to 5 characters, with its dot
};
static_assert(sizeof(fileExtensionRec) == 12);

/// One registered output driver. The first entry with a `driverId` of 0 ends the used part of the table.
struct outputDriverRec {
    std::uint32_t driverId;
    std::uint32_t driverGroup;  // group 1 is listed behind group 0
    std::uint16_t driverFlagA;
    std::uint16_t driverFlagB;
    std::uint16_t driverFlagC;
    std::uint8_t driverName[66];  // Pascal string
    std::uint32_t driverModule;   // four-character signature; 0 for an entry that no module registered
};
static_assert(offsetof(outputDriverRec, driverName) == 14 && offsetof(outputDriverRec, driverModule) == 80);
static_assert(sizeof(outputDriverRec) == 84);

inline constexpr std::uint32_t driverIdNoDriver = 1000;  // the first entry until a driver is installed

/// The four preferences that each engine mode has for itself.
struct modeSettingsRec {
    std::uint8_t alwaysUseDocumentDDF;
    std::uint8_t trimTagText;
    std::uint8_t framesFirst;
    std::uint8_t skipPasteboard;
};
static_assert(sizeof(modeSettingsRec) == 4);

/// Last settings of the sequence page items dialog.
struct sequenceItemsRec {
    std::uint16_t sortOrder;  // 1 to 8
    std::uint16_t itemKind;   // 1 all frames, 2 text frames, 3 graphic frames, 4 groups
    std::uint16_t scope;      // 1 selected items, 2 current page, 3 document
    std::uint16_t reserved;
    std::int32_t firstNumber;
    std::int32_t increment;
    std::int32_t gridSize;  // points; items within half of it count as one row or column
    std::uint8_t proofAfter;
    std::uint8_t restartPerPage;
    std::uint8_t groupsAsOne;
    std::uint8_t reservedEnd;
};
static_assert(offsetof(sequenceItemsRec, groupsAsOne) == 22);
static_assert(sizeof(sequenceItemsRec) == 24);

/// A record range that was used lately.
struct recentRangeRec {
    std::uint32_t used;
    std::uint32_t from;
    std::uint32_t to;
    std::uint32_t step;
    std::uint32_t skipFirst;
    std::uint32_t mode;
};
static_assert(sizeof(recentRangeRec) == 24);

/// Settings of a label sort; a document holds one as well, in machine byte order.
struct labelSortRec {
    std::uint32_t columns;            // labels across a sheet
    std::uint32_t rows;               // labels down a sheet
    std::uint32_t order;              // 0: down a column first, else along a row first
    std::uint16_t blanksOnLastSheet;  // 0: blank labels are spread over all sheets
    std::uint16_t reverseOrder;       // 1: from the last sheet to the first
    std::uint16_t labelSortOn;
    std::uint16_t reserved;
};
static_assert(sizeof(labelSortRec) == 20);

/// A text of a setting that isn't in use.
struct reservedTextRec {
    std::uint32_t enable;
    char text[1024];
    std::uint32_t spare;
};
static_assert(sizeof(reservedTextRec) == 1032);

}  // namespace tarnova
