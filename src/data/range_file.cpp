#include "data/range_file.h"

#include <algorithm>

#include "data/error_place.h"
#include "data/recent_ranges.h"
#include "data/record_range.h"
#include "engine/toolkit/choosers.h"
#include "engine/toolkit/files.h"
#include "engine/toolkit/messages.h"

namespace tarnova {

namespace {

constexpr std::size_t bytesOfCharacter = 4;  // of UTF-8 at most

void showTooLarge() {
    const PMString limit(std::to_string(rangeTextLimit));
    reportErrorKey("kZavoRecordRangeImportFileTooLargeErrorKey", &limit);
}

}  // namespace

errorWord readRangeFile(const std::string& path, PMString& rangeText, errorWord priorError) {
    if (priorError != 0) return priorError;
    constexpr std::size_t maxBytes = bytesOfCharacter * rangeTextLimit;
    const bool isTooLong = fileSizeOfPath(path.c_str(), nullptr) > static_cast<std::int64_t>(maxBytes);
    std::string bytes;
    if (!isTooLong) {
        const errorWord err = fileReadWhole(path.c_str(), bytes, maxBytes, 0);
        if (err != 0) return errorAt(err, path);
    }
    PMString text(bytes);
    if (isTooLong || text.codePointCount() > rangeTextLimit) return showTooLarge(), errFailed;
    std::replace_if(
        text.edit().begin(), text.edit().end(), [](char c) { return c == '\r' || c == '\n'; }, ',');
    recordRangeRec range;
    if (parseRangeText(text.view(), range) != rangeFault::none) return errFailed;
    rangeText = std::move(text);
    return 0;
}

errorWord importRangeFile(PMString& rangeText, bool& cancelled, errorWord priorError) {
    if (priorError != 0) return priorError;
    const fileChoiceRec choice{.title = PMString::ofKey("kZavoEditRecordRangeDialogImportDialogTitleKey"),
                               .kind = PMString("TEXT file(txt)"),
                               .extension = "txt",
                               .name = {},
                               .forSaving = false};
    std::string path;
    cancelled = !chooserService().chooseFile(choice, path);
    return cancelled ? errorWord{0} : readRangeFile(path, rangeText, 0);
}

}  // namespace tarnova
