#include "host/model/page_numbers.h"

#include <cctype>
#include <cstddef>

namespace tarnova {

namespace {

std::string roman(std::int32_t number) {
    static constexpr struct {
        std::int32_t value;
        const char* text;
    } rows[] = {{1000, "M"}, {900, "CM"}, {500, "D"}, {400, "CD"}, {100, "C"}, {90, "XC"}, {50, "L"},
                {40, "XL"},  {10, "X"},   {9, "IX"},  {5, "V"},    {4, "IV"},  {1, "I"}};
    std::string out;
    for (const auto& row : rows) {
        for (; number >= row.value; number -= row.value)
            out += row.text;
    }
    return out;
}

std::string letters(std::int32_t number) {
    const std::int32_t index = number - 1;
    return std::string(static_cast<std::size_t>(index / 26) + 1, static_cast<char>('A' + index % 26));
}

std::string lower(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

}  // namespace

std::string pageNumberText(std::int32_t number, std::int32_t numberingStyle) {
    const bool romanFits = number >= 1 && number < 4000;
    const bool lettersFit = number >= 1 && number < 27 * 26;
    switch (static_cast<NumberingStyle>(numberingStyle)) {
        case NumberingStyle::upperRoman:
            if (romanFits) return roman(number);
            break;
        case NumberingStyle::lowerRoman:
            if (romanFits) return lower(roman(number));
            break;
        case NumberingStyle::upperLetters:
            if (lettersFit) return letters(number);
            break;
        case NumberingStyle::lowerLetters:
            if (lettersFit) return lower(letters(number));
            break;
        case NumberingStyle::arabic:
            break;
    }
    return std::to_string(number);
}

}  // namespace tarnova
