#include "merge/number_file.h"

#include <cstdlib>

#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/files.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/strings.h"

namespace tarnova {
namespace {

constexpr errorWord errNumbersCreate = 72;
constexpr errorWord errNumbersOpen = 73;
constexpr std::uint16_t messageWriting = 226;
constexpr std::int64_t progressSteps = 10;

/// An open file whose lines are written many at a time.
class LineFile {
 public:
    explicit LineFile(const char* path) {
        std::uint16_t ignored = 0;
        error_ = fileDelete(path, &ignored, 0);
        if (fileCreate(path, error_) != 0) error_ = errNumbersCreate;
        if (fileOpen(path, fileWriteOnly, &handle_, &ignored, error_) != 0 && error_ == 0) error_ = errNumbersOpen;
    }
    ~LineFile() { fileClose(handle_); }
    LineFile(const LineFile&) = delete;
    LineFile& operator=(const LineFile&) = delete;

    void add(std::string_view line) {
        lines_.append(line).append("\r\n");
        if (lines_.size() >= filePieceBytes / 2) flush();
    }
    errorWord flush() {
        std::size_t count = lines_.size();
        std::uint16_t ignored = 0;
        error_ = fileWrite(handle_, lines_.data(), &count, &ignored, error_);
        lines_.clear();
        return error_;
    }
    [[nodiscard]] errorWord error() const { return error_; }

 private:
    fileHandle handle_ = noFile;
    errorWord error_ = 0;
    std::string lines_;
};

}  // namespace

errorWord writeNumberFile(const std::string& path, const numberingOptionsRec& options, std::string_view pad,
                          errorWord priorError) {
    if (priorError != 0) return priorError;
    LineFile file(path.c_str());
    const bool shows = appPrefs().showProgress != 0;
    const PMString message = messageString(messageWriting);
    const std::int64_t step = options.end >= options.start ? 1 : -1;
    const std::int64_t count = std::abs(std::int64_t{options.end} - options.start) + 1;
    statusDialog(message, 0, shows, false, file.error());
    if (file.error() == 0) file.add(stringOfKey("kZavoNumberingUtilityDataFileHeaderStringKey"));
    for (std::int64_t i = 0; i < count && file.error() == 0; ++i) {
        file.add(numberedText(options, pad, options.start + i * step));
        const std::int64_t tenth = (i + 1) * progressSteps / count;
        if (tenth != i * progressSteps / count)
            statusDialog(message, static_cast<int>(tenth * 100 / progressSteps), shows, false, 0);
    }
    const errorWord error = file.flush();
    statusDialog(message, -1, shows, false, 0);
    return error;
}

}  // namespace tarnova
