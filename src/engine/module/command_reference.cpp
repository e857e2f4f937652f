// The reference of the commands, made from their table.

#include "engine/module/command_table.h"

namespace tarnova {

namespace {

constexpr char introduction[] =
    "# Commands\n"
    "\n"
    "Every number of the engine's front door, as `tarnova exec` takes them (see automation.md) and as modules send them\n"
    "in a `commandBlock`. This page is made from the command table by `tarnova exec --reference`.\n"
    "\n"
    "A command of a mode switches the engine into it first; -6023 says that the mode isn't attached. Arguments that\n"
    "aren't given are left alone by a setter. Numbers of records count from 1 unless the argument says otherwise.\n";

const char* modeText(commandMode mode) {
    switch (mode) {
        case commandMode::merge:
            return "Merge mode. ";
        case commandMode::price:
            return "Price mode. ";
        default:
            return "";
    }
}

const char* wayText(argumentWay way) {
    switch (way) {
        case argumentWay::in:
            return "in";
        case argumentWay::out:
            return "out";
        default:
            return "in, out";
    }
}

void appendRow(std::string& text, const commandRow& row) {
    text += "\n## " + std::to_string(row.number) + " `" + row.name + "`\n\n" + modeText(row.mode) + row.summary;
    if (row.worker == nullptr) text += " Not yet available: answers -1.";
    text += "\n";
    if (row.arguments.empty()) return;
    text += "\n| argument | | type | meaning |\n| --- | --- | --- | --- |\n";
    for (const commandArgument& argument : row.arguments)
        text += "| `" + argumentName(argument) + "` | " + wayText(argument.way) + " | " +
                argumentTypeName(argument.type) + " | " + argument.meaning + " |\n";
}

}  // namespace

std::string commandReference() {
    std::string text = introduction;
    for (const commandRow& row : commandTable())
        appendRow(text, row);
    return text;
}

}  // namespace tarnova
