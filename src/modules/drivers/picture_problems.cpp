#include "modules/drivers/picture_problems.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "engine/toolkit/pm_string.h"
#include "modules/drivers/engine_call.h"

namespace tarnova {
namespace {

constexpr std::uint32_t commandSlotInfo = 542;
constexpr std::uint32_t commandReportCounts = 1253;
constexpr std::uint32_t commandReportEntry = 1235;
constexpr std::uint16_t kindPicture = 3;

constexpr std::uint32_t entriesLookedAt = 1000;  // of the report; finding one takes longer the more there are
constexpr std::string_view placeOpening = " (record ";  // of an example, behind the picture

/// Cuts a number and the line end behind it off.
bool takeNumber(std::string_view& bytes, std::uint64_t& number) {
    const char* const end = bytes.data() + bytes.size();
    const auto [behind, failure] = std::from_chars(bytes.data(), end, number);
    if (failure != std::errc() || behind == end || *behind != '\n') return false;
    bytes.remove_prefix(static_cast<std::size_t>(behind - bytes.data()) + 1);
    return true;
}

}  // namespace

void PictureProblems::add(const PictureProblems& more) {
    missing += more.missing;
    damaged += more.damaged;
    for (const std::string& example : more.examples)
        addExample(example);
}

void PictureProblems::addExample(const std::string& example) {
    const std::string_view picture = std::string_view(example).substr(0, example.rfind(placeOpening));
    const bool isThere = std::any_of(examples.begin(), examples.end(), [picture](std::string_view known) {
        return known.substr(0, known.rfind(placeOpening)) == picture;
    });
    if (!isThere && examples.size() < pictureExampleLimit) examples.push_back(example);
}

bool PictureProblems::gather(std::int32_t slots, std::uint32_t signature, std::uint32_t& entriesSeen) {
    for (std::int32_t slot = 0; slot < slots; ++slot) {
        std::int32_t slotMissing = 0, slotDamaged = 0;
        EngineCall info(commandSlotInfo, signature);
        if (!info.item(0, &slot).item(5, &slotMissing).item(7, &slotDamaged).send()) return false;
        missing += static_cast<std::uint64_t>(slotMissing);
        damaged += static_cast<std::uint64_t>(slotDamaged);
    }
    std::uint32_t entries = 0;
    EngineCall counts(commandReportCounts, signature);
    static_cast<void>(counts.item(2, &entries).send());  // its status is another count
    for (; entriesSeen < std::min(entries, entriesLookedAt) && examples.size() < pictureExampleLimit; ++entriesSeen) {
        std::uint16_t kind = kindPicture;
        PMString name, text, page;
        std::int32_t record = 0;
        EngineCall entry(commandReportEntry, signature);
        entry.item(0, &entriesSeen).item(1, &kind).item(3, &name).item(4, &text).item(5, &page).item(6, &record);
        if (!entry.send()) return false;
        addExample(pictureExample(text.view(), name.view(), record, page.view()));
    }
    entriesSeen = entries;
    return true;
}

std::string PictureProblems::bytes() const {
    std::string out = fmt::format("{}\n{}\n{}\n", missing, damaged, examples.size());
    for (const std::string& example : examples)
        out += fmt::format("{}\n{}", example.size(), example);
    return out;
}

bool PictureProblems::take(std::string_view& bytes) {
    std::uint64_t count = 0;
    if (!takeNumber(bytes, missing) || !takeNumber(bytes, damaged) || !takeNumber(bytes, count)) return false;
    for (; count > 0; --count) {
        std::uint64_t size = 0;
        if (!takeNumber(bytes, size) || size > bytes.size()) return false;
        examples.emplace_back(bytes.substr(0, size));
        bytes.remove_prefix(size);
    }
    return true;
}

std::string pictureExample(std::string_view problem, std::string_view name, std::int32_t record,
                           std::string_view page) {
    return fmt::format("{}: {}{}{}{}{})", problem, name, placeOpening, record, page.empty() ? "" : ", page ", page);
}

}  // namespace tarnova
