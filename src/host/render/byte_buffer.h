// A growing run of bytes that is filled, read and used again, with PDF's numbers written by our own formatter: printf
// and streams would cost more than the rest of a page.

#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

namespace tarnova {

class ByteBuffer {
 public:
    static constexpr std::size_t maximumNumberBytes = 32;

    [[nodiscard]] std::size_t size() const { return used; }
    [[nodiscard]] bool empty() const { return used == 0; }
    [[nodiscard]] std::string_view view() const { return {bytes.get(), used}; }
    [[nodiscard]] char* data() { return bytes.get(); }
    void clear() { used = 0; }
    void truncate(std::size_t size) { used = std::min(used, size); }

    /// Room for `count` more bytes; `commit` takes those that were written there.
    [[nodiscard]] char* room(std::size_t count) {
        if (capacity - used < count) grow(count);
        return bytes.get() + used;
    }
    void commit(std::size_t count) { used += count; }

    void put(char c) {
        *room(1) = c;
        ++used;
    }
    void put(std::string_view text) {
        if (text.empty()) return;
        std::memcpy(room(text.size()), text.data(), text.size());
        used += text.size();
    }

    void putInteger(std::int64_t value) {
        char* out = room(maximumNumberBytes);
        used = static_cast<std::size_t>(writeInteger(out, value) - bytes.get());
    }

    /// `scaled` is the number times ten to the power of `decimals` (0 to 4); zeros at the end are cut.
    void putFixed(std::int64_t scaled, int decimals) {
        static constexpr std::int64_t powers[] = {1, 10, 100, 1000, 10000};
        char* out = room(maximumNumberBytes);
        if (scaled < 0) {
            *out++ = '-';
            scaled = -scaled;
        }
        const std::int64_t power = powers[decimals];
        const std::int64_t whole = scaled / power;
        std::int64_t fraction = scaled % power;
        if (whole != 0 || fraction == 0) out = writeInteger(out, whole);
        if (fraction != 0) {
            *out++ = '.';
            for (std::int64_t digit = power / 10; fraction != 0; digit /= 10) {
                *out++ = static_cast<char>('0' + fraction / digit);
                fraction %= digit;
            }
        }
        used = static_cast<std::size_t>(out - bytes.get());
    }

    /// A number without unit (matrix, colour), to four decimals.
    void putNumber(double value) { putFixed(quantize(value, 10000), 4); }

    /// The nearest multiple of 1/`steps`, as a count of these. What isn't a number or is beyond any page gives the
    /// nearest number that a reader of PDF takes.
    [[nodiscard]] static std::int64_t quantize(double value, double steps) {
        if (!(value > -largest)) value = value <= -largest ? -largest : 0;
        return std::llround(std::min(value, largest) * steps);
    }

    /// Writes a number's digits at `out`, which has room for `maximumNumberBytes`, and gives where they end.
    [[nodiscard]] static char* writeInteger(char* out, std::int64_t value) {
        std::uint64_t rest = static_cast<std::uint64_t>(value);
        if (value < 0) {
            *out++ = '-';
            rest = 0 - rest;
        }
        char digits[20];
        int count = 0;
        do {
            digits[count++] = static_cast<char>('0' + rest % 10);
            rest /= 10;
        } while (rest != 0);
        while (count > 0)
            *out++ = digits[--count];
        return out;
    }

 private:
    static constexpr double largest = 1e9;

    void grow(std::size_t count) {
        const std::size_t wanted = std::max<std::size_t>(used + count, 2 * capacity + 256);
        std::unique_ptr<char[]> larger(new char[wanted]);
        if (used != 0) std::memcpy(larger.get(), bytes.get(), used);
        bytes = std::move(larger);
        capacity = wanted;
    }

    std::unique_ptr<char[]> bytes;
    std::size_t used = 0;
    std::size_t capacity = 0;
};

}  // namespace tarnova
