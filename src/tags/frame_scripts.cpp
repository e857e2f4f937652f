#include "tags/frame_scripts.h"

#include "engine/module/execute.h"
#include "engine/toolkit/memory.h"

namespace tarnova {

namespace {

constexpr std::uint32_t scriptModule = signatureOf("AQMS");
constexpr std::uint32_t commandGetFrameScript = 1236;
constexpr std::uint32_t commandSetFrameScript = 1259;

/// Frame, name, data and its size: the same items both ways.
bool send(std::uint32_t command, UIDRef frame, Str255& name, std::byte*& data, std::uint32_t& size) {
    commandReply reply{};
    commandArgs args{};
    args.item0 = &frame;
    args.item1 = name;
    args.item2 = &data;
    args.item3 = &size;
    commandBlock block{resultNobodyAnswered, command, &reply, &args};
    moduleCall(scriptModule, 0, block);
    return block.result == 0 && reply.status == 0;
}

}  // namespace

bool readFrameScript(UIDRef frame, frameScriptRec& entry) {
    Str255 name = {};
    std::byte* data = nullptr;
    std::uint32_t size = 0;
    const bool found = send(commandGetFrameScript, frame, name, data, size);
    const blockPtr<> owned(data);
    if (!found) return false;
    entry.name = pstrString(name);
    entry.data.assign(reinterpret_cast<const char*>(data), data == nullptr ? 0 : size);
    return true;
}

bool writeFrameScript(UIDRef frame, const frameScriptRec& entry) {
    Str255 name;
    pstrSet(name, entry.name);
    std::string bytes = entry.data;
    auto* data = reinterpret_cast<std::byte*>(bytes.data());
    auto size = static_cast<std::uint32_t>(bytes.size());
    return send(commandSetFrameScript, frame, name, data, size);
}

}  // namespace tarnova
