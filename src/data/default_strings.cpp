#include "data/default_strings.h"

#include "engine/toolkit/pm_string.h"

namespace tarnova {

void resetDefaultStrings(defaultStringSet& set, std::uint16_t which) {
    const auto reset = [](defaultStringRec& entry, std::string_view key) {
        entry = {};
        entry.enable = 1;
        pstrFromKey(key, entry.string);
    };
    reset(set.noData, "kZavoDefaultNoDataString");
    reset(set.noMatch, "kZavoDefaultNoMatchString");
    reset(set.badTag, "kZavoDefaultBadTagString");
    reset(set.missingAsset,
          which == defaultSetFrame ? "kZavoDefaultMissingPictureString" : "kZavoDefaultMissingArticleString");
    reset(set.endOfFile, "kZavoDefaultEOFString");
    reset(set.stackPad, "kZavoDefaultStackPadString");
}

}  // namespace tarnova
