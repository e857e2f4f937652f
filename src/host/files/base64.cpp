#include "host/files/base64.h"

#include <cstdint>

namespace tarnova {

namespace {

constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::uint32_t byteAt(std::string_view bytes, std::size_t index) {
    return index < bytes.size() ? static_cast<unsigned char>(bytes[index]) : 0;
}

}  // namespace

std::string toBase64(std::string_view bytes) {
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::uint32_t group = byteAt(bytes, i) << 16 | byteAt(bytes, i + 1) << 8 | byteAt(bytes, i + 2);
        out += digits[group >> 18];
        out += digits[group >> 12 & 63];
        out += i + 1 < bytes.size() ? digits[group >> 6 & 63] : '=';
        out += i + 2 < bytes.size() ? digits[group & 63] : '=';
    }
    return out;
}

bool fromBase64(std::string_view text, std::string& out) {
    if (text.size() % 4 != 0) return false;
    std::size_t padding = 0;
    while (padding < 2 && !text.empty() && text.back() == '=') {
        text.remove_suffix(1);
        ++padding;
    }
    std::string bytes;
    std::uint32_t bits = 0;
    int bitCount = 0;
    for (char c : text) {
        const std::size_t digit = digits.find(c);
        if (digit == std::string_view::npos) return false;
        bits = (bits << 6 | static_cast<std::uint32_t>(digit)) & 0xFFFFFF;
        bitCount += 6;
        if (bitCount < 8) continue;
        bitCount -= 8;
        bytes += static_cast<char>(bits >> bitCount & 0xFF);
    }
    if ((bits & ((1u << bitCount) - 1)) != 0) return false;
    out = std::move(bytes);
    return true;
}

}  // namespace tarnova
