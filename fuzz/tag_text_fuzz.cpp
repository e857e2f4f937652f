// Reads any bytes as a text with tags. Every tag must lie in the text, in order, with its data inside and within
// limits.

#include <cstdint>
#include <cstdlib>
#include <string>

#include "tags/tag_syntax.h"

namespace {

using namespace tarnova;

bool liesWell(const parsedTag& tag, std::int32_t from, std::int32_t size) {
    if (tag.tagStart < from || tag.tagLength < tagOpeningLength || tag.tagLength > size - tag.tagStart) return false;
    if (tag.dataStart == 0) return tag.dataLength == 0 && tag.tagLength == tagOpeningLength;
    return tag.dataStart > tag.tagStart && tag.dataLength >= 0 &&
           tag.dataStart + tag.dataLength < tag.tagStart + tag.tagLength;
}

bool isWell(const parsedTag& tag) {
    if ((tag.mediaData != nullptr) != (tag.mediaLength > 0)) return false;
    if (handleSize(tag.mediaData) != static_cast<std::size_t>(tag.mediaLength)) return false;
    const bool hasNames = tag.tag.searchKey[0] != 0 && tag.tag.extractionRecordName[0] != 0;
    return tag.errorCode != 0 || tag.tag.tagKind == 1 || hasNames;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::u32string characters(data, data + size);
    std::string text(size, ' ');
    reduceTagText(characters, text.data());
    std::uint16_t status = 0;
    const auto length = static_cast<std::int32_t>(size);
    const parsedTagList list = tagTextParse(length, text.data(), status);
    std::int32_t from = 0;
    for (const parsedTag* tag = list.get(); tag != nullptr; tag = tag->next) {
        if (!liesWell(*tag, from, length) || !isWell(*tag)) std::abort();
        from = tag->tagStart + tag->tagLength;
    }
    return 0;
}
