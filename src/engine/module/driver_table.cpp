#include "engine/module/driver_table.h"

#include <algorithm>

namespace tarnova {

namespace {

constexpr std::uint32_t driverIdPostScript = 11011;
constexpr std::uint32_t driverIdVipp = 11005;
constexpr std::uint32_t driverIdVippDatabase = 1003;
constexpr std::uint32_t driverIdVippDatabaseAsked = 2001;
constexpr std::uint32_t driverIdXeikon = 1009;
constexpr std::uint32_t driverIdXeikonAsked = 3000;
constexpr char nameVippDatabase[] = "Xerox VIPP (Database Mode)";
constexpr char nameXeikon[] = "Xeikon PrintStreamer";

outputDriverRec* tableEnd() {
    return std::end(appPrefs().driverTable);
}

outputDriverRec* freeRowFrom(outputDriverRec* row) {
    return std::find_if(row, tableEnd(), [](const outputDriverRec& entry) { return entry.driverId == 0; });
}

/// Without a `name` the entry takes the registration's name and module.
void enter(outputDriverRec& entry, const driverRegistrationRec& registration, std::uint32_t driverId,
           const char* name) {
    entry = {};
    entry.driverId = driverId;
    entry.driverGroup = registration.driverGroup;
    entry.driverFlagA = registration.driverFlagA;
    entry.driverFlagB = registration.driverFlagB;
    entry.driverFlagC = registration.driverFlagC;
    if (name != nullptr) {
        pstrSet(entry.driverName, name);
        return;
    }
    const std::size_t length = std::min<std::size_t>(registration.driverName[0], sizeof registration.driverName - 1);
    pstrSet(entry.driverName, pstrView(registration.driverName).substr(0, length));
    entry.driverModule = registration.driverModule;
}

}  // namespace

const outputDriverRec* findOutputDriver(std::uint32_t driverId) {
    const outputDriverRec* const limit = freeRowFrom(appPrefs().driverTable);
    const outputDriverRec* const found =
        std::find_if(static_cast<const outputDriverRec*>(appPrefs().driverTable), limit,
                     [driverId](const outputDriverRec& entry) { return entry.driverId == driverId; });
    return found == limit ? nullptr : found;
}

void registerOutputDriver(const driverRegistrationRec& registration) {
    outputDriverRec* const firstRow = appPrefs().driverTable;
    outputDriverRec* const row = registration.driverId == driverIdPostScript ? firstRow : freeRowFrom(firstRow);
    if (row == tableEnd()) return;
    switch (registration.driverId) {
        case driverIdVippDatabaseAsked:
            enter(*row, registration, driverIdVippDatabase, nameVippDatabase);
            break;
        case driverIdXeikonAsked:
            enter(*row, registration, driverIdXeikon, nameXeikon);
            break;
        case driverIdVipp:
            enter(*row, registration, driverIdVipp, nullptr);
            if (findOutputDriver(driverIdVippDatabase) == nullptr && row + 1 != tableEnd())
                enter(row[1], registration, driverIdVippDatabase, nameVippDatabase);
            break;
        default:
            enter(*row, registration, registration.driverId, nullptr);
    }
}

}  // namespace tarnova
