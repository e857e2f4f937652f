// Reads any bytes as a stored tag record; what is read whole must come back from being written, field by field.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "tags/tag_record.h"

namespace {

using namespace tarnova;

bool sameText(const std::uint8_t* a, const std::uint8_t* b) {
    return pstrView(a) == pstrView(b);
}

bool sameFields(const tagDataRec& a, const tagDataRec& b) {
    return a.linkLocked == b.linkLocked && a.associateMe == b.associateMe && sameText(a.searchKey, b.searchKey) &&
           sameText(a.searchCriteriaName, b.searchCriteriaName) &&
           sameText(a.extractionRecordName, b.extractionRecordName) && sameText(a.styleRecordName, b.styleRecordName) &&
           sameText(a.notes1, b.notes1) && sameText(a.notes2, b.notes2) && sameText(a.notes3, b.notes3) &&
           sameText(a.ruleName, b.ruleName) && handleSize(a.auxKeys) == handleSize(b.auxKeys) &&
           std::memcmp(*a.auxKeys, *b.auxKeys, handleSize(a.auxKeys)) == 0;
}

void checkRoundTrip(const tagDataRec& tag) {
    std::byte* block = nullptr;
    const errorWord error = tagRecordEncode(&tag, &block, 0);
    if (error == errTagMemory) return;  // further keys past the work buffer
    const blockPtr<> owned(block);
    const handlePtr keys(newHandle(0));
    tagDataRec back{};
    back.auxKeys = keys.get();
    const std::string_view bytes(reinterpret_cast<const char*>(block), blockSize(block));
    if (error != 0 || tagRecordDecode(bytes, &back, nullptr, nullptr, 0) != 0 || !sameFields(tag, back)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const handlePtr keys(newHandle(0));
    tagDataRec tag{};
    tag.auxKeys = keys.get();
    tag.tagStatus = tagStatusNone;
    const errorWord error = tagRecordDecode({reinterpret_cast<const char*>(data), size}, &tag, nullptr, nullptr, 0);
    if ((data != nullptr) && ((error == 0) != (tag.tagStatus == tagStatusRead))) std::abort();
    if (error == 0 && data != nullptr) checkRoundTrip(tag);
    return 0;
}
