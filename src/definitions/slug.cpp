#include "definitions/slug.h"

#include <filesystem>
#include <string_view>

#include "data/key_index.h"
#include "definitions/ddf.h"
#include "definitions/definition_state.h"
#include "engine/toolkit/files.h"

namespace tarnova {

namespace {

/// The definitions of a slug, in a set of their own.
class SlugSet {
 public:
    SlugSet() = default;
    ~SlugSet() { recordDefSetDiscard(list, set); }
    SlugSet(const SlugSet&) = delete;
    SlugSet& operator=(const SlugSet&) = delete;

    /// The slug itself stays as it is: reading takes the bytes out of a copy.
    errorWord read(blockHandle text, errorWord priorError) {
        if (priorError != 0) return priorError;
        blockHandle copy = text;
        if (text == nullptr || cloneHandle(copy) != 0) return errSlugMemory;
        const handlePtr owned(copy);
        Str255 name;
        pstrSet(name, "Temporary RDS");
        const errorWord err = recordDefSetNew(name, nullptr, list, set, 0);
        ddfLexerRec lexer{};
        return err == 0 ? ddfReadStream({noFile, copy}, *set, lexer, nullptr, 0) : err;
    }

    recordDefSetRec* list = nullptr;
    recordDefSetRec* set = nullptr;
};

/// Whether the path leads to an index file in this machine's own folder of them.
bool isOwnIndex(const char* path) {
    const std::filesystem::path file(path);
    return file.is_absolute() && file.parent_path() == std::filesystem::path(indexFolderPath()) &&
           fileIsPlain(path) != 0;
}

/// Copies before it removes, so that a failure leaves the old definition.
errorWord replaceDefinition(recordDefSetRec& set, const recordDefRec& source, const std::uint8_t* name) {
    recordDefRec *old = nullptr, *made = nullptr;
    errorWord err = findRecordDef(&set, name, old, 0);
    err = recordDefCopy(set, source, name, made, err);
    if (err != 0) return err;
    recordDefRemove(set, old);
    set.dirty = 1;
    return 0;
}

}  // namespace

errorWord definitionToText(const std::uint8_t* name, handlePtr& text, errorWord priorError) {
    text.reset();
    recordDefRec* definition = nullptr;
    errorWord err = findRecordDef(definitionState().currentDefSet, name, definition, priorError);
    if (err != 0 || definition == nullptr) return err;
    text.reset(newHandle(0));
    if (text == nullptr) return errDdfGrowHandle;
    err = ddfWriteDefinition(*definition, {noFile, text.get()}, err);
    if (err != 0) text.reset();
    return err;
}

errorWord slugDefinitionName(blockHandle text, std::int32_t index, std::uint8_t* name, errorWord priorError) {
    name[0] = 0;
    SlugSet slug;
    recordDefRec* definition = nullptr;
    errorWord err = slug.read(text, priorError);
    err = recordDefAt(slug.set, index, definition, err);
    if (err == 0 && definition != nullptr) pstrCopyBounded(name, definition->name, sizeof(Str31));
    return err;
}

errorWord adoptSlug(const std::uint8_t* sourceName, const std::uint8_t* targetName, blockHandle text, bool clearPath,
                    errorWord priorError) {
    SlugSet slug;
    recordDefRec* definition = nullptr;
    errorWord err = slug.read(text, priorError);
    err = findRecordDef(slug.set, sourceName, definition, err);
    if (err != 0) return err;
    recordDefSetRec* const set = definitionState().currentDefSet;
    if (definition == nullptr || set == nullptr) return errDefinitionMissing;
    if (clearPath || isForeignDatabasePath(definition->databasePath)) definition->databasePath[0] = 0;
    return replaceDefinition(*set, *definition, targetName);
}

bool isForeignDatabasePath(const char* path) {
    const std::string_view text = path;
    if (text.find('/') != std::string_view::npos) return !isOwnIndex(path);
    if (text.find(':') == std::string_view::npos) return false;
    return text.substr(1, 2) != ":\\" || text.find(':', 2) != std::string_view::npos;
}

}  // namespace tarnova
