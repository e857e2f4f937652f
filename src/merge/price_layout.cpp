#include "merge/price_layout.h"

#include <algorithm>
#include <memory>

#include "document/document.h"

namespace tarnova {
namespace {

constexpr double leastPointSize = 2;
constexpr double largestPointSize = 720;
constexpr double sizeMargin = 0.00000001;

double factorOf(std::int32_t fixed) {
    return fixed / static_cast<double>(fixedHundredPercent);
}

double limitedSize(double size) {
    if (size < leastPointSize - sizeMargin) return leastPointSize;
    return size > largestPointSize + sizeMargin ? largestPointSize : size;
}

/// Sets attributes on parts of one price.
class PriceText {
 public:
    PriceText(UIDRef story, std::int32_t start, errorWord priorError)
        : story_(story), start_(start), error_(priorError) {}

    /// What has the value already is left alone: each look of a run costs the document a list of its own.
    void apply(const priceRangeRec& range, TextAttributeClass kind, double value) {
        if (error_ != 0 || range.limit <= range.start || holds(range, kind, value)) return;
        error_ = story_.database->attributeApply(story_.uid, start_ + range.start, range.limit - range.start,
                                                 std::make_shared<NumberAttribute>(kind, value));
    }
    void raise(const priceRangeRec& range) {
        apply(range, TextAttributeClass::position, static_cast<double>(TextPosition::superscript));
    }
    /// Kerns the character at a position of the price; one in front of the price isn't its own.
    void kern(std::int32_t at, std::int32_t amount) {
        if (at >= 0) apply({at, at + 1}, TextAttributeClass::kerning, factorOf(amount));
    }
    [[nodiscard]] double numberAt(std::int32_t at, TextAttributeClass kind) const {
        return story_.database->numberAttributeAt(story_.uid, start_ + at, kind);
    }
    [[nodiscard]] errorWord error() const { return error_; }

 private:
    [[nodiscard]] bool holds(const priceRangeRec& range, TextAttributeClass kind, double value) const {
        for (std::int32_t at = range.start; at < range.limit;) {
            if (numberAt(at, kind) != value) return false;
            at += std::max(story_.database->attributeRunAt(story_.uid, start_ + at).length, 1);
        }
        return true;
    }

    UIDRef story_;
    std::int32_t start_;
    errorWord error_;
};

/// Sets the cents apart and gives the baseline shift of the number.
double layoutCents(PriceText& text, const formattedPriceRec& price, const styleRec& style) {
    const priceFormatRec& format = style.groups[price.valueCase].price;
    const priceRangeRec cents = centsOfPrice(price, style);
    const priceRangeRec number = numberOfPrice(price, style);
    const double size = text.numberAt(number.start, TextAttributeClass::pointSize);
    const double baseline = text.numberAt(number.start, TextAttributeClass::baselineShift);
    text.kern(cents.start - 1, format.centsKerning);
    if (format.specialCents != 0) {
        text.apply(cents, TextAttributeClass::pointSize, limitedSize(factorOf(format.centsSize) * size));
        text.apply(cents, TextAttributeClass::baselineShift, factorOf(format.centsShift) * size + baseline);
    } else {
        text.raise(cents);
        text.apply(cents, TextAttributeClass::baselineShift, baseline);
    }
    if (format.underline != 0) text.apply(cents, TextAttributeClass::underline, 1);
    return baseline;
}

void layoutSymbol(PriceText& text, const formattedPriceRec& price, const styleRec& style,
                  const priceAttributesRec& noted, double baseline) {
    const currencySymbolRec& currency = style.groups[price.valueCase].currency;
    const priceRangeRec symbol = symbolOfPrice(price, style);
    if (currency.superior != 0) {
        text.raise(symbol);
    } else if (currency.sizeSymbol != 0) {
        text.apply(symbol, TextAttributeClass::pointSize, limitedSize(factorOf(currency.symbolSize) * noted.pointSize));
        text.apply(symbol, TextAttributeClass::baselineShift,
                   factorOf(currency.symbolShift) * noted.pointSize + baseline);
    }
    text.kern((currency.insAfter != 0 ? symbol.start : symbol.limit) - 1, currency.symbolKerning);
}

/// Where the kerning of a number is its own: not in front of the cents or of a symbol, where a price has set it.
std::size_t unkernedPlace(std::u32string_view text, std::size_t first) {
    const std::size_t last = text.find_last_of(U"0123456789");
    if (last == text.npos || last < first) return first;
    if (last > first) return last - 1;
    return first + 1 < text.size() ? first + 1 : first;
}

}  // namespace

priceAttributesRec notePriceAttributes(UIDRef story, std::int32_t start, std::int32_t length) {
    const Document& document = *story.database;
    const std::u32string text = document.textRead(story.uid, start, length);
    const std::size_t found = text.find_first_of(U"0123456789.,");
    const std::size_t first = found == text.npos ? 0 : found;
    const auto numberAt = [&](std::size_t at, TextAttributeClass kind) {
        return document.numberAttributeAt(story.uid, start + static_cast<std::int32_t>(at), kind);
    };
    return {numberAt(first, TextAttributeClass::pointSize), numberAt(first, TextAttributeClass::baselineShift),
            numberAt(unkernedPlace(text, first), TextAttributeClass::kerning)};
}

errorWord resetPriceAttributes(UIDRef story, std::int32_t start, const priceAttributesRec& noted,
                               errorWord priorError) {
    PriceText text(story, start, priorError);
    const priceRangeRec first{0, 1};
    text.apply(first, TextAttributeClass::pointSize, noted.pointSize);
    text.apply(first, TextAttributeClass::baselineShift, noted.baselineShift);
    text.apply(first, TextAttributeClass::kerning, noted.kerning);
    text.apply(first, TextAttributeClass::position, static_cast<double>(TextPosition::normal));
    text.apply(first, TextAttributeClass::underline, 0);
    return text.error();
}

errorWord layoutPrice(UIDRef story, std::int32_t start, const formattedPriceRec& price, const styleRec& style,
                      const priceAttributesRec& noted, errorWord priorError) {
    if (priorError != 0 || !price.isPrice) return priorError;
    PriceText text(story, start, 0);
    double baseline = 0;
    const priceRangeRec cents = centsOfPrice(price, style);
    if (cents.limit > cents.start) baseline = layoutCents(text, price, style);
    if (price.symbol > 0) layoutSymbol(text, price, style, noted, baseline);
    return text.error();
}

}  // namespace tarnova
