#include "cli/exec/exec_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "cli/exec/exec_fault.h"
#include "cli/exec/exec_item.h"
#include "engine/module/execute.h"

namespace tarnova {

namespace {

/// One command from its request to its answer.
class ExecCommand {
 public:
    ExecCommand(const rapidjson::Value& itsRequest, const ExecDocuments& itsDocuments)
        : request(itsRequest), documents(itsDocuments) {}

    void read();
    void run();
    void write(ExecWriter& json) const;

 private:
    void readArgs(const rapidjson::Value& given);
    void readArg(std::string_view name, const rapidjson::Value& value);
    void readReply(const rapidjson::Value& given);
    void readReplyField(std::string_view name, const rapidjson::Value& value);
    void readRegistrationField(const commandArgument& argument, const rapidjson::Value& value);
    void readOut(const rapidjson::Value& names);
    ExecItem& itemOf(const commandArgument& argument);
    [[nodiscard]] const commandArgument* argumentNamed(std::string_view name) const;
    [[nodiscard]] bool hasPlace(argumentPlace place, unsigned index) const;
    [[nodiscard]] bool replyTextIsC() const;
    [[nodiscard]] bool registers() const { return hasPlace(argumentPlace::registration, 0); }
    void writeReply(ExecWriter& json) const;
    void writeArgs(ExecWriter& json) const;
    void writeItems(ExecWriter& json) const;

    const rapidjson::Value& request;
    const ExecDocuments& documents;
    const commandRow* row = nullptr;
    std::uint32_t number = 0;
    bool tallyra = false;
    bool withArgs = true;
    bool withReply = true;
    commandArgs args{};
    commandReply reply{};
    driverRegistrationRec registration{};
    Str255 auxText = {};
    std::int32_t result = 0;
    std::unique_ptr<ExecItem> items[commandItemCount];
    std::vector<const commandArgument*> wanted;
};

void ExecCommand::read() {
    requireMembers(request, {"command", "module", "args", "reply", "out"});
    number = static_cast<std::uint32_t>(integerMember(request, "command", 0, UINT32_MAX));
    row = findCommand(number);
    if (const auto* const module = memberOf(request, "module")) {
        const std::string_view name = stringOf(*module, "module");
        if (name != "Kelvane" && name != "Tallyra")
            throw ExecFault(fmt::format("module: \"Kelvane\" or \"Tallyra\" is wanted, not \"{}\"", name));
        tallyra = name == "Tallyra";
    }
    if (const auto* const given = memberOf(request, "args")) readArgs(*given);
    if (const auto* const given = memberOf(request, "reply")) readReply(*given);
    if (const auto* const names = memberOf(request, "out")) readOut(*names);
    if (hasPlace(argumentPlace::reply, static_cast<unsigned>(replyField::auxPointer))) reply.auxPointer = auxText;
}

const commandArgument* ExecCommand::argumentNamed(std::string_view name) const {
    if (row == nullptr) return nullptr;
    const auto found = std::find_if(row->arguments.begin(), row->arguments.end(),
                                    [name](const commandArgument& known) { return argumentName(known) == name; });
    return found == row->arguments.end() ? nullptr : &*found;
}

bool ExecCommand::hasPlace(argumentPlace place, unsigned index) const {
    return row != nullptr && std::any_of(row->arguments.begin(), row->arguments.end(), [&](const auto& known) {
               return known.place == place && known.index == index;
           });
}

ExecItem& ExecCommand::itemOf(const commandArgument& argument) {
    std::unique_ptr<ExecItem>& item = items[argument.index];
    if (item == nullptr) {
        item = std::make_unique<ExecItem>(argument, documents);
        itemAt(args, argument.index) = item->address();
    }
    return *item;
}

void ExecCommand::readArgs(const rapidjson::Value& given) {
    withArgs = !given.IsNull();
    if (!withArgs) return;
    if (!given.IsObject()) throw ExecFault("args: an object or null is wanted, not " + kindOf(given));
    forEachMember(given, [this](std::string_view name, const rapidjson::Value& value) { readArg(name, value); });
}

/// Flags, numbers and texts may be given for any command, items only as the row declares them.
void ExecCommand::readArg(std::string_view name, const rapidjson::Value& value) {
    for (unsigned i = 0; i < commandFlagCount; ++i) {
        if (name != fmt::format("flag{}", i)) continue;
        flagAt(args, i) = static_cast<std::uint8_t>(integerOf(value, name, 0, UINT8_MAX));
        return;
    }
    for (unsigned i = 0; i < commandNumberCount; ++i) {
        if (name != fmt::format("num{}", i)) continue;
        numberAt(args, i) = static_cast<std::uint32_t>(integerOf(value, name, INT32_MIN, UINT32_MAX));
        return;
    }
    for (unsigned i = 0; i < commandTextCount; ++i) {
        if (name != fmt::format("text{}", i)) continue;
        const std::string_view text = stringOf(value, name);
        if (text.size() > pstrMaxLength) throw ExecFault(fmt::format("{}: at most 255 bytes are wanted", name));
        pstrFromView(textAt(args, i), sizeof(Str255), text);
        return;
    }
    const commandArgument* const argument = argumentNamed(name);
    if (argument == nullptr || argument->place != argumentPlace::item)
        throw ExecFault(fmt::format("command {} takes no \"{}\"", number, name));
    ExecItem& item = itemOf(*argument);
    item.read(value);
    itemAt(args, argument->index) = item.address();  // a text may have moved
}

void ExecCommand::readReply(const rapidjson::Value& given) {
    withReply = !given.IsNull();
    if (!withReply) return;
    if (!given.IsObject()) throw ExecFault("reply: an object or null is wanted, not " + kindOf(given));
    forEachMember(given, [this](std::string_view name, const rapidjson::Value& value) { readReplyField(name, value); });
}

bool ExecCommand::replyTextIsC() const {
    const commandArgument* const text = argumentNamed("reply.text");
    return text != nullptr && text->type == argumentType::cString;
}

void ExecCommand::readReplyField(std::string_view name, const rapidjson::Value& value) {
    const commandArgument* const declared = argumentNamed("reply." + std::string(name));
    if (declared != nullptr && declared->place == argumentPlace::registration)
        return readRegistrationField(*declared, value);
    if (name == "text") {
        const std::string_view text = plainStringOf(value, name);
        const std::size_t longest = replyTextIsC() ? replyTextBytes - 1 : pstrMaxLength;
        if (text.size() > longest) throw ExecFault(fmt::format("reply text: at most {} bytes are wanted", longest));
        if (replyTextIsC()) {
            text.copy(reinterpret_cast<char*>(reply.text), longest);
        } else {
            pstrFromView(reply.text, sizeof(Str255), text);
        }
    } else if (name == "callerSignature") {
        reply.callerSignature = signatureFrom(value, name);
    } else if (name == "inValue" || name == "count" || name == "outWord") {
        std::uint32_t& field = name == "inValue" ? reply.inValue : name == "count" ? reply.count : reply.outWord;
        field = static_cast<std::uint32_t>(integerOf(value, name, INT32_MIN, UINT32_MAX));
    } else if (name == "outValue") {
        reply.outValue = static_cast<std::int32_t>(integerOf(value, name, INT32_MIN, INT32_MAX));
    } else if (name == "outFlag" || name == "isSubset") {
        std::uint8_t& field = name == "outFlag" ? reply.outFlag : reply.isSubset;
        field = static_cast<std::uint8_t>(integerOf(value, name, 0, UINT8_MAX));
    } else if (name == "hasHeader" || name == "headerHint") {
        std::uint16_t& field = name == "hasHeader" ? reply.hasHeader : reply.headerHint;
        field = static_cast<std::uint16_t>(integerOf(value, name, 0, UINT16_MAX));
    } else {
        throw ExecFault(fmt::format("the reply of command {} has no \"{}\"", number, name));
    }
}

void ExecCommand::readRegistrationField(const commandArgument& argument, const rapidjson::Value& value) {
    const std::string name = argumentName(argument);
    const auto wide = [&] { return static_cast<std::uint32_t>(integerOf(value, name, 0, UINT32_MAX)); };
    const auto narrow = [&] { return static_cast<std::uint16_t>(integerOf(value, name, 0, UINT16_MAX)); };
    switch (static_cast<registrationField>(argument.index)) {
        case registrationField::driverId:
            registration.driverId = wide();
            return;
        case registrationField::driverGroup:
            registration.driverGroup = wide();
            return;
        case registrationField::driverFlagA:
            registration.driverFlagA = narrow();
            return;
        case registrationField::driverFlagB:
            registration.driverFlagB = narrow();
            return;
        case registrationField::driverFlagC:
            registration.driverFlagC = narrow();
            return;
        case registrationField::driverName:
            pstrSet(registration.driverName, stringOf(value, name));
            return;
        case registrationField::driverModule:
            registration.driverModule = signatureFrom(value, name);
            return;
    }
}

void ExecCommand::readOut(const rapidjson::Value& names) {
    if (!names.IsArray()) throw ExecFault("out: an array is wanted, not " + kindOf(names));
    for (const rapidjson::Value& name : names.GetArray()) {
        const commandArgument* const argument = argumentNamed(stringOf(name, "out"));
        if (argument == nullptr || argument->place != argumentPlace::item)
            throw ExecFault(fmt::format("command {} has no \"{}\"", number, name.GetString()));
        static_cast<void>(itemOf(*argument));
        wanted.push_back(argument);
    }
}

void ExecCommand::run() {
    if (registers()) std::memcpy(&reply, &registration, sizeof registration);
    commandBlock block{resultNobodyAnswered, number, withReply ? &reply : nullptr, withArgs ? &args : nullptr};
    if (tallyra) {
        ZavoTallyraModule().Execute(block);
    } else {
        ZavoKelvaneModule().Execute(block);
    }
    result = block.result;
    if (!registers()) return;
    const std::int32_t status = reply.status;  // what follows is the registration's
    reply = {};
    reply.status = status;
}

void ExecCommand::writeReply(ExecWriter& json) const {
    json.Key("reply");
    if (!withReply) {
        json.Null();
        return;
    }
    json.StartObject();
    const auto number64 = [&json](const char* name, std::int64_t value) {
        json.Key(name);
        json.Int64(value);
    };
    number64("status", reply.status);
    number64("outValue", reply.outValue);
    number64("outFlag", reply.outFlag);
    number64("outWord", reply.outWord);
    const auto* const bytes = reinterpret_cast<const char*>(reply.text);
    writeTextMember(json, "text",
                    replyTextIsC() ? std::string_view(bytes, strnlen(bytes, replyTextBytes)) : pstrView(reply.text));
    if (reply.auxPointer != nullptr) writeTextMember(json, "auxText", pstrView(auxText));
    number64("count", reply.count);
    number64("hasHeader", reply.hasHeader);
    number64("headerHint", reply.headerHint);
    number64("isSubset", reply.isSubset);
    json.EndObject();
}

void ExecCommand::writeArgs(ExecWriter& json) const {
    json.Key("args");
    if (!withArgs) {
        json.Null();
        return;
    }
    json.StartObject();
    const std::uint32_t numbers[] = {args.num0, args.num1, args.num2, args.num3};
    for (unsigned i = 0; i < commandNumberCount; ++i) {
        writeKey(json, fmt::format("num{}", i));
        json.Uint(numbers[i]);
    }
    if (hasPlace(argumentPlace::version, 0)) {
        json.Key("versionMajor");
        json.Uint(args.versionMajor);
        json.Key("versionMinor");
        json.Uint(args.versionMinor);
    }
    json.EndObject();
}

void ExecCommand::writeItems(ExecWriter& json) const {
    json.Key("items");
    json.StartObject();
    for (const commandArgument* const argument : wanted)
        items[argument->index]->write(json);
    json.EndObject();
}

void ExecCommand::write(ExecWriter& json) const {
    json.Key("command");
    json.Uint(number);
    json.Key("result");
    json.Int(result);
    writeReply(json);
    writeArgs(json);
    writeItems(json);
}

}  // namespace

void runExecCommand(const rapidjson::Value& request, const ExecDocuments& documents, ExecAlerts& alerts,
                    ExecWriter& json) {
    ExecCommand command(request, documents);
    command.read();
    command.run();
    command.write(json);
    json.Key("alerts");
    alerts.writeAll(json);
}

}  // namespace tarnova
