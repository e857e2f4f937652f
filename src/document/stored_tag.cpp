#include "document/stored_tag.h"

#include "engine/toolkit/byte_order.h"

namespace tarnova {

namespace {

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
    if (static_cast<unsigned char>(left[2]) != storedTagNameBytes) return std::nullopt;
    const StoredTagField out{left.substr(3, storedTagNameBytes),
                             left.substr(storedTagFieldHeaderBytes, size - storedTagFieldHeaderBytes)};
    left.remove_prefix(size);
    return out;
}

}  // namespace tarnova
