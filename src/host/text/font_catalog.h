// Which font files there are and which of them a family and style name mean.
//
// The folders are named here and read with a configuration of our own; the machine's configuration plays no part, so a
// layout looks the same wherever the same font packages are installed.

#pragma once

#include <fontconfig/fontconfig.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/text/font_cache_folder.h"

namespace tarnova {

/// One face of a font file, as far as choosing needs it.
struct FontFileEntry {
    std::string path;
    int faceIndex = 0;
    std::vector<std::string> families;  // names of the family, the first one leads
    std::vector<std::string> styles;
    int weight = 0;                         // FC_WEIGHT_...
    int slant = 0;                          // FC_SLANT_...
    int width = 0;                          // FC_WIDTH_...
    const FcCharSet* characters = nullptr;  // owned by the catalog's configuration
};

/// What a style name asks for.
struct StyleWish {
    std::string name;
    bool bold = false;
    bool italic = false;
};
[[nodiscard]] StyleWish parseStyle(std::string_view style);

/// The family that stands in for a name of the classic printer fonts and their kin, or the name itself.
[[nodiscard]] std::string_view familyBehindAlias(std::string_view family);

/// The font files of some folders, in an order that depends on their paths alone.
class FontCatalog {
 public:
    /// Reads the folders; those that don't exist are left out. What the files hold is kept from start to start in the
    /// first of the cache folders that can be written.
    explicit FontCatalog(const std::vector<const char*>& folders,
                         const std::vector<std::string>& cacheFolders = usualFontCacheFolders());

    /// The face of a family that comes nearest to the style, or null when the family isn't here.
    [[nodiscard]] const FontFileEntry* match(std::string_view family, const StyleWish& style) const;
    /// A face that has the character, near in style; serif families come first when `serif` is set. Null: none has it.
    [[nodiscard]] const FontFileEntry* covering(char32_t character, const StyleWish& style, bool serif) const;

 private:
    struct ConfigurationCloser {
        void operator()(FcConfig* made) const { FcConfigDestroy(made); }
    };
    std::unique_ptr<FcConfig, ConfigurationCloser> configuration;
    std::vector<FontFileEntry> entries;
};

/// The fonts that layouts name: URW base 35, Liberation, DejaVu.
[[nodiscard]] const FontCatalog& baseFonts();
/// Those and the fonts of further scripts; read when a name or character isn't in the base fonts.
[[nodiscard]] const FontCatalog& allFonts();

}  // namespace tarnova
