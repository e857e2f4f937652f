#include "merge/text_import.h"

#include <string>

#include "document/document.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/text_encoding.h"
#include "merge/asset_search.h"
#include "merge/placed_pictures.h"
#include "tags/tagged_text.h"

namespace tarnova {
namespace {

constexpr std::uint16_t messageNotFound = 90;
constexpr std::int16_t importFilterAny = 3;  // each filter is tried

/// The value as the data has it: marks of XPress Tags may be single bytes.
std::string bytesOf(const tagValueRec& value, const std::string& utf8) {
    return value.encoding == 0 && !value.isHostText ? utf8ToWindows1252(utf8) : utf8;
}

bool promptsAreOn() {
    const bool isUnattended = session().unattended != 0 && session().showAlertsUnattended == 0;
    return appPrefs().promptMissingAssets != 0 && pictureRun().promptArticles && !isUnattended;
}

/// What the user does about an article that isn't there; the path that he chose, or none.
std::string askForArticle(const std::string& name, std::uint16_t& cancel) {
    Str255 message, parameter;
    messageText(message, messageNotFound);
    pstrFromView(parameter, sizeof(parameter), name);
    std::string chosen;
    switch (askPictureProblem(message, parameter, nullptr, nullptr, &chosen)) {
        case pictureAnswer::abort:
            cancel |= 1;
            return {};
        case pictureAnswer::noPrompt:
            pictureRun().promptArticles = false;
            return {};
        case pictureAnswer::chooseFile:
            rememberAsset(name, chosen);
            return chosen;
        case pictureAnswer::goOn:
            break;
    }
    return {};
}

/// The path of the article that a value names; empty when there is none.
errorWord findArticle(const Document& document, const std::string& name, const tagValueRec& value, std::string& path,
                      std::uint16_t& cancel) {
    bool found = false;
    std::uint32_t kind = assetKindFile;
    const errorWord error = findAsset(assetSearchOf(document, name, value.encoding), path, found, kind, 0);
    if (error != 0 || found) return error;
    path = promptsAreOn() ? askForArticle(name, cancel) : std::string();
    return 0;
}

}  // namespace

errorWord importFormattedValue(UIDRef story, std::int32_t start, std::int32_t count, const tagValueRec& value,
                               std::u32string_view text, std::int32_t& outLength) {
    const std::string bytes = utf32ToUtf8(text);
    const auto importBy = [&](std::string_view filter) {
        return story.database->importText(story.uid, start, count, {bytes, {}}, filter, outLength);
    };
    switch (value.extraction->importFilter) {
        case importFilterHostTags:
            return importTaggedText(bytes, story, start, count, outLength);
        case importFilterRtf:
            return importBy(textImportFilters[1]);
        case importFilterTaggedText:
            return importXpressText(bytesOf(value, bytes), story, start, count, outLength);
        case importFilterAny: {
            errorWord error = errImportFilter;
            for (const std::string_view filter : textImportFilters)
                if (error == errImportFilter) error = importBy(filter);
            return error;
        }
        default:
            return importBy(textImportFilters[2]);
    }
}

bool importsValue(const tagValueRec& value) {
    if (value.extraction == nullptr || value.status != fetchFound) return false;
    const bool isFile = value.extraction->isafile != 0 && session().engineRunType != engineRunLineTest;
    return isFile || value.extraction->importFilter != importFilterNone;
}

errorWord importValue(UIDRef story, std::int32_t start, std::int32_t count, const tagValueRec& value,
                      std::u32string_view text, bool& imported, std::uint16_t& cancel) {
    Document& document = *story.database;
    std::int32_t length = 0;
    imported = value.extraction->isafile == 0;
    if (imported) return importFormattedValue(story, start, count, value, text, length);
    const std::string bytes = utf32ToUtf8(text);
    std::string path;
    const errorWord error = findArticle(document, bytes, value, path, cancel);
    if (error != 0 || path.empty()) return error;
    imported = true;
    return document.importText(story.uid, start, count, {{}, path}, document.importFilterFor(path), length);
}

}  // namespace tarnova
