#include "host/text/icu_text.h"

#include <unicode/utf16.h>

namespace tarnova {

void IcuText::assign(std::u32string_view text) {
    units.clear();
    characterOf.clear();
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto index = static_cast<std::int32_t>(i);
        const bool bad = text[i] > 0x10FFFF || U_IS_SURROGATE(text[i]);
        const UChar32 c = bad ? 0xFFFD : static_cast<UChar32>(text[i]);
        characterOf.push_back(index);
        if (U_IS_BMP(c)) {
            units.push_back(static_cast<UChar>(c));
            continue;
        }
        units.push_back(U16_LEAD(c));
        units.push_back(U16_TRAIL(c));
        characterOf.push_back(index);
    }
    characterOf.push_back(static_cast<std::int32_t>(text.size()));
}

}  // namespace tarnova
