#include "document/table_attribute.h"

#include <cstring>
#include <optional>
#include <utility>

#include "engine/toolkit/byte_order.h"
#include "engine/toolkit/memory.h"

namespace tarnova {

namespace {

constexpr std::size_t numberBytes = 4;

void putNumber(std::string& out, std::size_t value) {
    char number[numberBytes];
    storeBig32(number, static_cast<std::uint32_t>(value));
    out.append(number, sizeof number);
}

void putText(std::string& out, std::string_view text) {
    putNumber(out, text.size());
    out += text;
}

std::optional<std::uint32_t> takeNumber(std::string_view& stream) {
    if (stream.size() < numberBytes) return std::nullopt;
    const std::uint32_t value = loadBig32(stream.data());
    stream.remove_prefix(numberBytes);
    return value;
}

bool takeText(std::string_view& stream, std::string& out) {
    const std::optional<std::uint32_t> size = takeNumber(stream);
    if (!size || stream.size() < *size) return false;
    out.assign(stream.substr(0, *size));
    stream.remove_prefix(*size);
    return true;
}

}  // namespace

std::string NokDataTagTableAttr::label() const {
    return "<" + owner + "_" + mode + "_" + colour + "_" + spareText + ">";
}

std::byte* NokDataTagTableAttr::copyData() const {
    if (bytes.empty()) return nullptr;
    auto* copy = static_cast<std::byte*>(newBlock(bytes.size()));
    if (copy != nullptr) std::memcpy(copy, bytes.data(), bytes.size());
    return copy;
}

std::string NokDataTagTableAttr::toStream() const {
    std::string out;
    putNumber(out, id);
    for (const std::string* text : {&owner, &mode, &colour, &spareText, &bytes})
        putText(out, *text);
    return out;
}

errorWord NokDataTagTableAttr::fromStream(std::string_view& stream, errorWord priorError) {
    if (priorError != 0) return priorError;
    std::string_view left = stream;
    NokDataTagTableAttr read;
    const std::optional<std::uint32_t> readId = takeNumber(left);
    if (!readId) return errFailed;
    read.id = *readId;
    for (std::string* text : {&read.owner, &read.mode, &read.colour, &read.spareText, &read.bytes}) {
        if (!takeText(left, *text)) return errFailed;
    }
    *this = std::move(read);
    stream = left;
    return 0;
}

}  // namespace tarnova
