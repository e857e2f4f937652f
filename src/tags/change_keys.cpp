#include "tags/change_keys.h"

#include "document/walk.h"
#include "engine/session/session.h"
#include "tags/tag_attribute.h"
#include "tags/tag_record.h"

namespace tarnova {
namespace {

/// The stored form of `tag` with the key; empty when there is no memory, which is in `engineError`.
std::string withKey(tagDataRec tag, std::string_view key) {
    pstrFromView(tag.searchKey, sizeof(tag.searchKey), key);
    std::byte* block = nullptr;
    auto& error = session().engineError;
    error = tagRecordEncode(&tag, &block, error);
    const blockPtr<> owned(block);
    if (error != 0) return {};
    return {reinterpret_cast<const char*>(block), blockSize(block)};
}

class ZavoChangeKeysTextCallback final : public ZavoStoryCallback {
 public:
    explicit ZavoChangeKeysTextCallback(std::string_view itsKey) : key(itsKey) { wantsFrame = false; }

    bool TagIsMine(UIDRef story, const TagAttribute& attribute) override {
        return tagIsOwn(attribute) && runCarriesTag(*story.database, story.uid, position, runLength, runEndsThread) &&
               tagRecordDecode(attribute.data(), &tag, nullptr, nullptr, 0) == 0;
    }
    std::int32_t TagProcess(UIDRef story) override {
        const std::string data = withKey(tag, key);
        auto& error = session().engineError;
        if (error == 0) error = replaceTagData(story, data);
        position = tagStart + tagLength;
        return 0;
    }

 private:
    std::string_view key;
    tagDataRec tag{};
};

class ZavoChangeKeysFrameCallback final : public ZavoFrameCallback {
 public:
    explicit ZavoChangeKeysFrameCallback(std::string_view itsKey) : key(itsKey) {}

    bool TagIsMine(std::string_view data) override { return tagRecordDecode(data, &tag, nullptr, nullptr, 0) == 0; }
    std::int32_t TagProcess() override {
        const std::string data = withKey(tag, key);
        auto& error = session().engineError;
        if (error == 0) error = replaceTagData(data);
        return 0;
    }

 private:
    std::string_view key;
    tagDataRec tag{};
};

constexpr std::string_view stepKey = "kZavoChangeKeysStringKey";

/// `change` as one step of undo; hands over what it leaves in `engineError`.
template <typename Change>
errorWord asOneStep(Document& document, const Change& change) {
    const PMString title = PMString::ofKey(stepKey);
    const errorWord error = document.BeginCommandSequence(title.view());
    if (error != 0) return error;
    change();
    document.EndCommandSequence();
    return std::exchange(session().engineError, errorWord{0});
}

}  // namespace

errorWord changeTextKeys(UIDRef story, textSpanRec range, std::string_view key, errorWord priorError) {
    if (priorError != 0) return priorError;
    return asOneStep(*story.database, [&] {
        ZavoChangeKeysTextCallback texts(key);
        std::int32_t start = range.start, length = range.length;
        std::uint16_t cancel = 0;
        texts.Process(story, start, length, kInvalidUIDRef, &cancel);
    });
}

errorWord changeFrameTreeKeys(UIDRef item, std::string_view key, errorWord priorError) {
    if (priorError != 0) return priorError;
    return asOneStep(*item.database, [&] {
        ZavoChangeKeysFrameCallback frames(key);
        ZavoChangeKeysTextCallback texts(key);
        processItem(item, &frames, &texts, nullptr);
    });
}

}  // namespace tarnova
