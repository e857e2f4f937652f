#include "tags/link_names.h"

#include <algorithm>

#include "document/document.h"
#include "document/frame_callback.h"
#include "document/story_callback.h"
#include "document/walk.h"
#include "engine/session/session.h"
#include "engine/toolkit/pstring.h"
#include "tags/tag_record.h"

namespace tarnova {
namespace {

void noteName(std::string_view storedTag, std::vector<std::string>& names) {
    tagDataRec tag{};
    if (tagRecordDecode(storedTag, &tag, nullptr, nullptr, 0) != 0) return;
    std::string name = pstrString(tag.extractionRecordName);
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(std::move(name));
}

class TextLinkNames final : public ZavoStoryCallback {
 public:
    explicit TextLinkNames(std::vector<std::string>& out) : names(out) {}
    bool TagIsMine(UIDRef, const TagAttribute& attribute) override {
        if (attribute.ownerName() == engineName()) noteName(attribute.data(), names);
        return false;
    }

 private:
    std::vector<std::string>& names;
};

class FrameLinkNames final : public ZavoFrameCallback {
 public:
    explicit FrameLinkNames(std::vector<std::string>& out) : names(out) {}
    bool TagIsMine(std::string_view data) override {
        noteName(data, names);
        return false;
    }

 private:
    std::vector<std::string>& names;
};

}  // namespace

std::vector<std::string> linkNamesOf(UIDRef document) {
    std::vector<std::string> names;
    TextLinkNames texts(names);
    FrameLinkNames frames(names);
    walkDocument(*document.database, &frames, &texts, 0, 0, WalkScope::everything, false, false, nullptr, nullptr,
                 nullptr, true);
    return names;
}

}  // namespace tarnova
