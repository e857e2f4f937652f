#include "document/stored_tag.h"

#include "engine/toolkit/byte_order.h"

namespace tarnova {

namespace {

constexpr std::size_t fieldNameOffset = 3;  // behind the size word and the length of the name

void append16(std::string& out, std::size_t value) {
    out += static_cast<char>(value >> 8 & 0xFF);
    out += static_cast<char>(value & 0xFF);
}

}  // namespace

StoredTagWriter::StoredTagWriter(std::uint16_t tagKind, bool locked) : bytes(4, '\0') {
    append16(bytes, storedTagVersion);
    append16(bytes, static_cast<std::size_t>(tagKind * 2 + (locked ? 1 : 0)));
}

void StoredTagWriter::field(std::string_view name, std::string_view payload) {
    if (payload.size() > storedTagCapacity) {
        fits = false;
        return;
    }
    append16(bytes, storedTagFieldHeaderBytes + payload.size());
    bytes += static_cast<char>(storedTagNameBytes);
    bytes += name;
    bytes += payload;
}

void StoredTagWriter::stringField(std::string_view name, std::string_view text) {
    if (text.size() > 255) {
        fits = false;
        return;
    }
    field(name, static_cast<char>(text.size()) + std::string(text));
}

std::optional<std::string> StoredTagWriter::finish() const {
    if (!fits || bytes.size() > storedTagCapacity) return std::nullopt;
    std::string out = bytes;
    storeBig32(out.data(), static_cast<std::uint32_t>(out.size()));
    return out;
}

StoredTagReader::StoredTagReader(std::string_view record) {
    if (record.size() < storedTagHeaderBytes || loadBig32(record.data()) != record.size()) return;
    if (loadBig16(record.data() + 4) != storedTagVersion) return;
    kind = loadBig16(record.data() + 6);
    left = record.substr(storedTagHeaderBytes);
    good = true;
}

std::optional<StoredTagField> StoredTagReader::next() {
    if (left.size() < storedTagFieldHeaderBytes) return std::nullopt;
    const std::size_t size = loadBig16(left.data());
    if (size < storedTagFieldHeaderBytes || size > left.size()) return std::nullopt;
    const std::string_view named = left.substr(fieldNameOffset, size - fieldNameOffset);
    const std::size_t nameBytes = static_cast<unsigned char>(left[fieldNameOffset - 1]);
    if (named.size() < nameBytes) return std::nullopt;
    const StoredTagField out{named.substr(0, nameBytes), named.substr(nameBytes)};
    left.remove_prefix(size);
    return out;
}

}  // namespace tarnova
