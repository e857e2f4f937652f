#include "merge/price_format.h"

#include <algorithm>
#include <utility>

#include "engine/toolkit/pstring.h"
#include "engine/toolkit/text_encoding.h"

namespace tarnova {
namespace {

constexpr std::size_t centsLength = 2;
constexpr std::size_t leastPrice = 3;  // a radix and the cents

bool isDigit(char32_t c) {
    return c >= U'0' && c <= U'9';
}

bool isRadix(char32_t c) {
    return c == U'.' || c == U',';
}

/// Characters behind the cents: those behind the last radix and two digits.
std::size_t trailingLength(std::u32string_view text) {
    if (text.size() < leastPrice) return 0;
    const std::size_t radix = text.find_last_of(U".,");
    if (radix == text.npos) return 0;
    const std::u32string_view behind = text.substr(radix + 1);
    const bool endsAtCents = behind.size() >= 3 && isDigit(behind[0]) && isDigit(behind[1]) && !isDigit(behind[2]);
    return endsAtCents ? behind.size() - centsLength : 0;
}

/// A number that ends in a radix and two digits.
bool hasPriceForm(std::u32string_view number) {
    const std::size_t length = number.size();
    return length >= leastPrice && isDigit(number[length - 1]) && isDigit(number[length - 2]) &&
           isRadix(number[length - 3]);
}

int caseOf(std::u32string_view number) {
    const bool hasRadix = number.size() >= leastPrice;
    const bool centsZero = hasRadix && number.ends_with(U"00");
    const std::u32string_view dollars = hasRadix ? number.substr(0, number.size() - leastPrice) : U"";
    const bool dollarsZero = std::all_of(dollars.begin(), dollars.end(), [](char32_t c) { return c == U'0'; });
    if (dollarsZero) return centsZero ? priceCaseOther : priceCaseOnlyCents;
    return centsZero ? priceCaseOnlyDollars : priceCaseOther;
}

std::u32string_view radixOf(std::int16_t useRadix) {
    constexpr std::u32string_view characters[] = {U"", U".", U",", U".", U","};
    return useRadix >= 0 && std::cmp_less(useRadix, std::size(characters)) ? characters[useRadix] : U"";
}

bool radixGoesWithCents(const priceFormatRec& format) {
    return format.useRadix == 3 || format.useRadix == 4;
}

/// Gives the number the parts that the format wants. False: the value stays as it is.
bool reshape(const priceFormatRec& format, formattedPriceRec& price) {
    const std::size_t limit = price.text.size() - static_cast<std::size_t>(price.trailing);
    if (format.format == priceFormatNone) return true;
    if (!hasPriceForm(std::u32string_view(price.text).substr(0, limit))) return false;
    switch (format.format) {
        case priceFormatDollars:
            price.text.resize(limit - leastPrice);
            price.trailing = 0;
            break;
        case priceFormatCents:
            price.text.erase(0, limit - centsLength);
            break;
        case priceFormatAll:
            price.text.replace(limit - leastPrice, 1, radixOf(format.useRadix));
            break;
        default:
            return false;
    }
    price.isPrice = true;
    return true;
}

/// Puts the symbol beside the number, unless it stands there already.
void addSymbol(const currencySymbolRec& currency, formattedPriceRec& price) {
    const std::u32string symbol = utf8ToUtf32(pstrView(currency.string));
    if (currency.enable == 0 || symbol.empty()) return;
    price.symbol = static_cast<std::int32_t>(symbol.size());
    if (currency.insAfter == 0) {
        if (!price.text.starts_with(symbol)) price.text.insert(0, symbol);
    } else if (price.text.ends_with(symbol)) {
        price.trailing = std::max(price.trailing - price.symbol, 0);
    } else {
        price.text.insert(price.text.size() - static_cast<std::size_t>(price.trailing), symbol);
    }
}

const priceGroupRec& groupOf(const formattedPriceRec& price, const styleRec& style) {
    return style.groups[price.valueCase];
}

}  // namespace

formattedPriceRec formatPrice(std::u32string_view value, const styleRec& style, bool findTrailing) {
    formattedPriceRec price;
    price.text = value;
    const formattedPriceRec unchanged = price;
    if (value.empty()) return unchanged;
    if (findTrailing) price.trailing = static_cast<std::int32_t>(trailingLength(value));
    if (style.checkPrice != 0) {
        const std::u32string_view number = value.substr(0, value.size() - static_cast<std::size_t>(price.trailing));
        if (number.size() >= leastPrice && !hasPriceForm(number)) return unchanged;
        price.valueCase = caseOf(number);
        price.isPrice = true;
    }
    if (!reshape(groupOf(price, style).price, price)) return unchanged;
    addSymbol(groupOf(price, style).currency, price);
    return price;
}

priceRangeRec numberOfPrice(const formattedPriceRec& price, const styleRec& style) {
    const bool isBehind = groupOf(price, style).currency.insAfter != 0;
    const auto length = static_cast<std::int32_t>(price.text.size());
    return {isBehind ? 0 : price.symbol, length - price.trailing - (isBehind ? price.symbol : 0)};
}

priceRangeRec centsOfPrice(const formattedPriceRec& price, const styleRec& style) {
    const priceFormatRec& format = groupOf(price, style).price;
    if (!price.isPrice || format.format != priceFormatAll) return {};
    const priceRangeRec number = numberOfPrice(price, style);
    const std::int32_t length = static_cast<std::int32_t>(centsLength) + (radixGoesWithCents(format) ? 1 : 0);
    return {number.limit - length, number.limit};
}

priceRangeRec symbolOfPrice(const formattedPriceRec& price, const styleRec& style) {
    if (price.symbol == 0) return {};
    const auto length = static_cast<std::int32_t>(price.text.size());
    if (groupOf(price, style).currency.insAfter == 0) return {0, price.symbol};
    return {length - price.trailing - price.symbol, length};
}

}  // namespace tarnova
