#include "engine/module/command_table.h"

#include <algorithm>

#include "engine/module/command_rows.h"

namespace tarnova {

namespace {

constexpr const char* replyFieldNames[replyFieldCount] = {"inValue",   "outValue",   "outPointer", "outFlag",
                                                          "outWord",   "text",       "auxPointer", "count",
                                                          "hasHeader", "headerHint", "isSubset",   "callerSignature"};
constexpr const char* registrationFieldNames[] = {"driverId",    "driverGroup", "driverFlagA", "driverFlagB",
                                                  "driverFlagC", "driverName",  "driverModule"};
constexpr const char* typeNames[argumentTypeCount] = {"u8",
                                                      "i16",
                                                      "u16",
                                                      "i32",
                                                      "u32",
                                                      "four characters",
                                                      "`PMString`",
                                                      "Pascal string",
                                                      "C string",
                                                      "text",
                                                      "text",
                                                      "`IDFile`",
                                                      "`UIDRef`",
                                                      "`UIDList`",
                                                      "list of texts",
                                                      "list of numbers",
                                                      "list of four-character codes",
                                                      "list of groups of [link, style] pairs"};

std::vector<commandRow> makeTable() {
    std::vector<commandRow> table;
    for (const auto rows : {moduleRows(), driverRows(), definitionRows(), dataRows(), optionRows(), preferenceRows(),
                            searchPathRows(), runRows(), tagRows(), frameRows(), reportRows(), buildRows(),
                            workingCopyRows()})
        table.insert(table.end(), rows.begin(), rows.end());
    std::sort(table.begin(), table.end(), [](const commandRow& a, const commandRow& b) { return a.number < b.number; });
    return table;
}

}  // namespace

std::span<const commandRow> commandTable() {
    static const std::vector<commandRow> table = makeTable();
    return table;
}

const commandRow* findCommand(std::uint32_t number) {
    const std::span<const commandRow> table = commandTable();
    const auto found =
        std::lower_bound(table.begin(), table.end(), number,
                         [](const commandRow& row, std::uint32_t wanted) { return row.number < wanted; });
    return found != table.end() && found->number == number ? &*found : nullptr;
}

std::string argumentName(const commandArgument& argument) {
    const std::string digits = std::to_string(argument.index);
    switch (argument.place) {
        case argumentPlace::item:
            return "item" + digits;
        case argumentPlace::number:
            return "num" + digits;
        case argumentPlace::flag:
            return "flag" + digits;
        case argumentPlace::text:
            return "text" + digits;
        case argumentPlace::reply:
            return "reply." + std::string(replyFieldNames[argument.index]);
        case argumentPlace::registration:
            return "reply." + std::string(registrationFieldNames[argument.index]);
        case argumentPlace::version:
            return argument.index == 0 ? "versionMajor" : "versionMinor";
    }
    return {};
}

const char* argumentTypeName(argumentType type) {
    return typeNames[static_cast<unsigned>(type)];
}

const char* replyFieldName(replyField field) {
    return replyFieldNames[static_cast<unsigned>(field)];
}

}  // namespace tarnova
