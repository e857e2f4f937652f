// Readers of formatted text that is imported into documents.

#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "host/model/imported_text.h"

namespace tarnova {

/// "InDesign Tagged Text": text with tags such as "<pstyle:Body>" and "<ct:Bold>" behind a head such as "<ASCII-WIN>",
/// by their long and their short names. What it reads stands in docs/imported-text.md; other tags are passed over.
[[nodiscard]] std::unique_ptr<TextImportFilter> makeTaggedTextFilter();
/// "RTF Import Filter": Rich Text Format.
[[nodiscard]] std::unique_ptr<TextImportFilter> makeRtfFilter();

/// Puts both in use beside the plain text filter. Doing it again changes nothing.
void addTextImportFilters();

/// Puts the text of a filter together, character by character.
class ImportedTextBuilder {
 public:
    explicit ImportedTextBuilder(ImportedText& itsOut) : out(itsOut) {}

    /// What text that comes from here on looks like.
    ImportedLook look;
    /// Of the paragraph that is being read, and those behind it.
    std::optional<std::string> style;
    ParaOverrides paragraph;

    /// A line end, however it was written, ends the paragraph.
    void add(char32_t character);
    void endParagraph();
    /// Ends the text. A last paragraph without text goes: its return only ends the file.
    void finish();

 private:
    ImportedText& out;
    ImportedParagraph open;
};

/// A number of a file, from `least` to `greatest`; nothing for any other text.
[[nodiscard]] std::optional<double> importedNumber(std::string_view text, double least, double greatest);
/// Text in UTF-8, or else of one byte a character: Windows-1252, or Mac OS Roman.
[[nodiscard]] std::u32string importedCharacters(std::string_view bytes, bool isMac);

}  // namespace tarnova
