#include "data/quick_setup.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <unordered_set>

#include "data/error_place.h"
#include "data/questions.h"
#include "data/record_parser.h"
#include "engine/toolkit/files.h"
#include "engine/toolkit/text_encoding.h"

namespace tarnova {

namespace {

constexpr std::size_t headBytes = 4 << 20;  // in which the first line must end; a longer one is cut
constexpr std::size_t blockBytes = 256 << 10;
constexpr std::size_t rawNameMaxBytes = 255;
constexpr std::size_t nameMaxBytes = 31;

bool isLineEnd(char byte) {
    return byte == '\r' || byte == '\n';
}

// Behind a byte order mark, the first byte that is a tab or printable.
std::size_t findStart(std::string_view text, bool isUtf8) {
    std::size_t at = isUtf8 && text.substr(0, 3) == "\xEF\xBB\xBF" ? 3 : 0;
    while (at < text.size() && text[at] != '\t' && static_cast<std::uint8_t>(text[at]) < 32)
        ++at;
    return at;
}

std::int16_t lineEndAt(std::string_view text, std::size_t at) {
    if (text[at] == '\n') return osTypeLf;
    return at + 1 < text.size() && text[at + 1] == '\n' ? osTypeCrLf : osTypeCr;
}

std::uint8_t delimiterOfLine(std::string_view line) {
    if (line.find('\t') != std::string_view::npos) return '\t';
    if (line.find(',') != std::string_view::npos) return ',';
    const auto blanks = std::count(line.begin(), line.end(), ' ');
    const auto semicolons = std::count(line.begin(), line.end(), ';');
    const auto carets = std::count(line.begin(), line.end(), '^');
    if (semicolons > blanks && semicolons >= carets) return ';';
    return carets > blanks || blanks < carets ? '^' : '\t';
}

// Counts the pairs of one qualifier that stand around fields. It looks at each qualifier's two neighbours.
class ClosingCount {
 public:
    ClosingCount(char qualifier, char delimiter) : qualifier_(qualifier), delimiter_(delimiter) {}

    /// Goes over [from, limit) of a piece of the file, of which further bytes may lie on both sides.
    void feed(std::string_view piece, std::size_t from, std::size_t limit) {
        for (std::size_t at = piece.find(qualifier_, from); at < limit; at = piece.find(qualifier_, at + 1)) {
            if (!isOpen_) {
                isOpen_ = at == 0 || bordersField(piece[at - 1]);
            } else if (at + 1 == piece.size() || (bordersField(piece[at + 1]) && piece[at - 1] != qualifier_)) {
                isOpen_ = false;
                ++closings_;
            }
        }
    }
    std::uint64_t closings() const { return closings_; }

 private:
    bool bordersField(char byte) const { return byte == delimiter_ || isLineEnd(byte); }

    char qualifier_, delimiter_;
    bool isOpen_ = false;
    std::uint64_t closings_ = 0;
};

// A file that is read from its front to its end, in pieces.
class PieceReader {
 public:
    PieceReader() = default;
    PieceReader(const PieceReader&) = delete;
    PieceReader& operator=(const PieceReader&) = delete;
    ~PieceReader() { fileClose(file_); }

    errorWord open(const char* path) {
        const errorWord err = fileOpen(path, fileReadOnly, &file_, nullptr, 0);
        return fileSize(file_, &size_, nullptr, err) == 0 ? errorWord{0} : errDataRead;
    }
    /// Appends up to `count` bytes to `piece`.
    errorWord read(std::string& piece, std::size_t count) {
        const std::size_t kept = piece.size();
        piece.resize(kept + count);
        std::size_t got = count;
        if (fileRead(file_, piece.data() + kept, &got, nullptr, 0) != 0) return errDataRead;
        piece.resize(kept + got);
        taken_ += static_cast<std::int64_t>(got);
        atEnd_ = got < count;
        return 0;
    }
    bool atEnd() const { return atEnd_; }
    int tenths() const { return size_ == 0 ? 10 : static_cast<int>(taken_ * 10 / size_); }

 private:
    fileHandle file_ = noFile;
    std::int64_t size_ = 0, taken_ = 0;
    bool atEnd_ = false;
};

// Goes over the rest of the file for the qualifier. `piece` is its first part, behind the start of the data.
errorWord findQualifier(PieceReader& reader, std::string& piece, std::uint8_t delimiter, std::uint8_t& qualifier) {
    ClosingCount doubles('"', static_cast<char>(delimiter)), singles('\'', static_cast<char>(delimiter));
    const PMString text = PMString::ofKey("kZavoProgressSearchingForTextQualifiers");
    const bool active = toolkitState().unattended == 0;
    errorWord err = statusDialog(text, 0, active, false, 0);
    std::size_t from = 0;
    for (int shown = 0; err == 0;) {
        const std::size_t limit = reader.atEnd() || piece.empty() ? piece.size() : piece.size() - 1;
        doubles.feed(piece, from, limit);
        singles.feed(piece, from, limit);
        if (reader.atEnd()) break;
        if (limit > 0) piece.erase(0, limit - 1);
        from = limit > 0 ? 1 : 0;
        err = reader.read(piece, blockBytes);
        if (reader.tenths() == shown) continue;
        shown = reader.tenths();
        err = statusDialog(text, 10 * shown, active, false, err);
    }
    err = statusDialog(text, -1, active, false, err);
    if (doubles.closings() + singles.closings() > 0) qualifier = singles.closings() > doubles.closings() ? '\'' : '"';
    return err;
}

// Cuts the first line into names, qualifiers resolved, as bytes of the file.
std::vector<std::string> cutNames(std::string_view line, std::uint8_t delimiter, std::uint8_t qualifier) {
    std::vector<std::string> names(1);
    bool inQuotes = false;
    for (std::size_t at = 0; at < line.size(); ++at) {
        const auto byte = static_cast<std::uint8_t>(line[at]);
        if (byte == delimiter && !inQuotes) {
            names.emplace_back();
            continue;
        }
        if (qualifier != 0 && byte == qualifier) {
            const bool isDoubled = inQuotes && at + 1 < line.size() && line[at + 1] == line[at];
            if (!isDoubled) {
                inQuotes = !inQuotes;
                continue;
            }
            ++at;
        }
        if (names.back().size() < rawNameMaxBytes) names.back().push_back(line[at]);
    }
    return names;
}

std::string trimmed(const std::string& text) {
    const auto isSpace = [](char byte) { return static_cast<std::uint8_t>(byte) <= ' '; };
    const auto first = std::find_if_not(text.begin(), text.end(), isSpace);
    const auto last = std::find_if_not(text.rbegin(), std::make_reverse_iterator(first), isSpace).base();
    return std::string(first, last);
}

std::string cutTo(const std::string& name, std::size_t maxBytes) {
    return name.substr(0, utf8CutLength(name, maxBytes));
}

std::string cleanName(const std::string& raw) {
    std::string name = trimmed(raw);
    for (char& byte : name)
        if (byte == ':' || isNameSpecialChar(static_cast<std::uint8_t>(byte))) byte = '_';
    if (name.empty()) name = PMString::ofKey("kZavoQuickSetupEmptyFieldNameKey").bytes();
    return cutTo(name, nameMaxBytes);
}

// Names are told apart without regard to ASCII case.
class UniqueNames {
 public:
    std::string take(const std::string& name) {
        std::string candidate = name;
        for (std::uint32_t number = 1; !used_.insert(foldedName(candidate)).second; ++number) {
            const std::string digits = std::to_string(number);
            candidate = cutTo(name, nameMaxBytes - digits.size()) + digits;
        }
        return candidate;
    }

 private:
    static std::string foldedName(std::string name) {
        for (char& byte : name)
            byte = ascii::lower(byte);
        return name;
    }
    std::unordered_set<std::string> used_;
};

void takeNames(std::string_view line, bool isUtf8, quickSetupAnalysis& analysis) {
    std::vector<std::string> raw = cutNames(line, analysis.delimiter, analysis.qualifier);
    analysis.tooManyFields = raw.size() > fieldNameCapacity;
    if (analysis.tooManyFields) raw.resize(fieldNameCapacity);
    UniqueNames unique;
    for (std::string& name : raw) {
        if (!isUtf8) name = windows1252ToUtf8(name);
        const bool isPicture = name.starts_with('@');
        if (isPicture) name.erase(0, 1);
        analysis.fields.push_back({unique.take(cleanName(name)), isPicture});
    }
}

errorWord analyzeFile(const char* path, const quickSetupKnown& known, quickSetupAnalysis& analysis) {
    PieceReader reader;
    std::string piece;
    errorWord err = reader.open(path);
    if (err == 0) err = reader.read(piece, headBytes);
    if (err != 0) return err;
    const bool isUtf8 = analysis.dataType == dataTypeUtf8;
    piece.erase(0, findStart(piece, isUtf8));
    const std::size_t lineSize = std::min(piece.find_first_of("\r\n"), piece.size());
    if (lineSize < piece.size()) analysis.osType = lineEndAt(piece, lineSize);
    const std::string line = piece.substr(0, lineSize);
    analysis.delimiter = known.delimiter ? *known.delimiter : delimiterOfLine(line);
    if (known.qualifier)
        analysis.qualifier = *known.qualifier;
    else
        err = findQualifier(reader, piece, analysis.delimiter, analysis.qualifier);
    if (err == 0 && !line.empty()) takeNames(line, isUtf8, analysis);
    return err;
}

}  // namespace

errorWord quickSetupAnalyze(const char* path, quickSetupAnalysis& analysis, errorWord priorError) {
    return quickSetupAnalyzeAs(path, {}, analysis, priorError);
}

errorWord quickSetupAnalyzeAs(const char* path, const quickSetupKnown& known, quickSetupAnalysis& analysis,
                              errorWord priorError) {
    if (priorError != 0) return priorError;
    analysis = {};
    const errorWord err = detectFileTextKind(path, -1, analysis.kind, 0);
    if (err != 0) return err;
    const encodingClass found = encodingClassOf(analysis.kind);
    if (found == encodingClass::utf16) return errorAt(errSetupUtf16, path);
    if (found == encodingClass::thirdKind) return errorAt(errSetupThirdKind, path);
    analysis.cancelled =
        found == encodingClass::binary && !askKeyUnlessUnattended("kZavoWarningBadDataFileEncodingMsgKey");
    if (analysis.cancelled) return 0;
    const std::int16_t foundType = found == encodingClass::utf8 ? dataTypeUtf8 : dataTypeEightBit;
    analysis.dataType = known.dataType.value_or(foundType);
    return errorAt(analyzeFile(path, known, analysis), path);
}

}  // namespace tarnova
