#include "host/files/layout_reader.h"

#include <algorithm>
#include <unordered_map>

namespace tarnova {

namespace {

template <typename Index>
void addName(std::unordered_map<std::string, Index>& names, const JsonValue& value, Index index, const char* kind) {
    if (!names.emplace(nameOf(value), index).second) {
        faultAt(value, std::string("There are two ") + kind + " named \"" + std::string(value.text.substr(0, 80)) +
                           "\"; give one of them another name.");
    }
}

bool isUidMember(const JsonValue& value) {
    const std::string_view name = value.name;
    if (name == "uid" || name == "storyUid" || name == "pagesLayerUid") return true;
    return value.parent != nullptr && (value.parent->name == "nodes" || value.parent->name == "columnUids");
}

bool isTagId(const JsonValue& value) {
    return value.name == "id" && value.parent != nullptr &&
           (value.parent->name == "tag" || value.parent->name == "tallyraTag");
}

struct SwatchTarget {
    Swatch swatch;
    const JsonValue* name = nullptr;
    int colours = 0;
};

template <Swatch::Space space, std::size_t count>
void readColour(SwatchTarget& target, const JsonValue& value) {
    ++target.colours;
    target.swatch.space = space;
    std::fill(std::begin(target.swatch.values), std::end(target.swatch.values), 0);
    const std::vector<double> values = numbersOf(value, count, 0, 1);
    std::copy(values.begin(), values.end(), target.swatch.values);
}

constexpr Member<SwatchTarget> swatchMembers[] = {
    {"name", keep<SwatchTarget, &SwatchTarget::name>},
    {"cmyk", readColour<Swatch::Space::cmyk, 4>},
    {"rgb", readColour<Swatch::Space::rgb, 3>},
};

struct LayerTarget {
    Layer layer;
    const JsonValue* name = nullptr;
    const JsonValue* uid = nullptr;
};

constexpr Member<LayerTarget> layerMembers[] = {
    {"name", keep<LayerTarget, &LayerTarget::name>},
    {"uid", keep<LayerTarget, &LayerTarget::uid>},
    {"visible", [](LayerTarget& t, const JsonValue& v) { t.layer.visible = boolOf(v); }},
    {"locked", [](LayerTarget& t, const JsonValue& v) { t.layer.locked = boolOf(v); }},
    {"printable", [](LayerTarget& t, const JsonValue& v) { t.layer.printable = boolOf(v); }},
};

[[noreturn]] void faultTooDeep(const JsonValue& value, const char* what) {
    faultAt(value, std::string(what) + " are based on each other more than " + std::to_string(basedOnDepthLimit) +
                       " deep; base some of them on another.");
}

/// Refuses circles and long chains. `basedOn` are the members by which styles are based on others, by index.
template <typename Style>
void checkBases(const std::vector<Style>& styles, const std::vector<const JsonValue*>& basedOn) {
    constexpr std::size_t unknown = 0;
    std::vector<std::size_t> depth(styles.size(), unknown);  // of known ones from 1
    for (std::size_t i = 0; i < styles.size(); ++i) {
        std::vector<std::size_t> chain;
        std::size_t at = i;
        while (depth[at] == unknown) {
            chain.push_back(at);
            if (styles[at].basedOn < 0) break;
            if (chain.size() > styles.size()) {
                faultAt(*basedOn[i], "The style \"" + styles[i].name + "\" is based on itself by way of others.");
            }
            at = static_cast<std::size_t>(styles[at].basedOn);
        }
        std::size_t below = depth[at];
        for (auto style = chain.rbegin(); style != chain.rend(); ++style) {
            depth[*style] = ++below;
            if (below > basedOnDepthLimit + 1) faultTooDeep(*basedOn[*style], "Styles");
        }
    }
}

}  // namespace

struct LayoutReader::SpreadTarget {
    const JsonValue* uid = nullptr;
    const JsonValue* nodes = nullptr;
    const JsonValue* name = nullptr;
    const JsonValue* pages = nullptr;
    const JsonValue* items = nullptr;
};

struct LayoutReader::PageTarget {
    const JsonValue* value = nullptr;
    const JsonValue* uid = nullptr;
    const JsonValue* size = nullptr;
    const JsonValue* edges = nullptr;
    const JsonValue* master = nullptr;
    const JsonValue* items = nullptr;
};

struct LayoutReader::SectionTarget {
    sectionRec section;
    const JsonValue* page = nullptr;
};

std::unique_ptr<DocumentModel> LayoutReader::read() {
    static constexpr Member<Parts> rows[] = {
        {layoutVersionMember, keep<Parts, &Parts::version>},
        {"title", keep<Parts, &Parts::title>},
        {"uid", keep<Parts, &Parts::uid>},
        {"pagesLayerUid", keep<Parts, &Parts::pagesLayerUid>},
        {"nextUid", keep<Parts, &Parts::nextUid>},
        {"nextTagId", keep<Parts, &Parts::nextTagId>},
        {"pageSize", keep<Parts, &Parts::pageSize>},
        {"baselineGrid", keep<Parts, &Parts::baselineGrid>},
        {"facing", keep<Parts, &Parts::facing>},
        {"swatches", keep<Parts, &Parts::swatches>},
        {"characterStyles", keep<Parts, &Parts::characterStyles>},
        {"paragraphStyles", keep<Parts, &Parts::paragraphStyles>},
        {"layers", keep<Parts, &Parts::layers>},
        {"shapes", keep<Parts, &Parts::shapes>},
        {"texts", keep<Parts, &Parts::texts>},
        {"masters", keep<Parts, &Parts::masters>},
        {"pages", keep<Parts, &Parts::pages>},
        {"spreads", keep<Parts, &Parts::spreads>},
        {"sections", keep<Parts, &Parts::sections>},
        {"data", keep<Parts, &Parts::data>},
    };
    readMembers<Parts>(tree.root(), "a layout", rows, parts);
    readHead();
    readSwatches();
    readStyles();
    readLayers();
    items.readShared(parts.shapes, parts.texts);
    readMasters();
    readSpreads();
    readSections();
    readData();
    items.placeOverrides();
    items.makeStories();
    std::unique_ptr<DocumentModel> document = builder.finish();
    if (document->nextUid() > fileUidLimit) faultAt(tree.root(), "The UIDs of this layout are too large.");
    return document;
}

/// UIDs and tag identities that the file leaves open lie above all that it gives.
void LayoutReader::reserveIdentities() {
    double uid = 0, tagId = 0;
    tree.forEach([&](const JsonValue& value) {
        uids.allowObject();
        if (!value.is(JsonValue::Type::number)) return;
        if (isUidMember(value)) uid = std::max(uid, integerOf(value, 1, fileUidLimit - 1) + 1.0);
        if (isTagId(value)) tagId = std::max(tagId, std::min(value.number + 1, 4294967295.0));
    });
    if (parts.nextUid != nullptr) uid = std::max(uid, double(integerOf(*parts.nextUid, 1, fileUidLimit)));
    if (parts.nextTagId != nullptr) tagId = std::max(tagId, double(integerOf(*parts.nextTagId, 1, 4294967295)));
    // The UIDs that a new document has at first are free for the file.
    builder.setOwnUids(kInvalidUID, kInvalidUID);
    builder.setLayers({});
    builder.reserveUids(static_cast<UID>(uid));
    builder.reserveTagIds(static_cast<std::uint32_t>(std::max(tagId, 1.0)));
}

void LayoutReader::readHead() {
    if (parts.version == nullptr) {
        faultAt(tree.root(), "This is no layout: the member \"tarnovaLayout\" with its version, 1, is missing.");
    }
    if (integerOf(*parts.version, 0, 1000000) != layoutVersion) {
        faultAt(*parts.version, "This layout is of a version that this program doesn't know; it reads version 1.");
    }
    reserveIdentities();
    const UID own = uids.uidOf(parts.uid);
    builder.setOwnUids(own, uids.uidOf(parts.pagesLayerUid));
    if (parts.title != nullptr) builder.setTitle(std::string(stringOf(*parts.title)));
    if (parts.baselineGrid != nullptr) builder.setBaselineGrid(readBaselineGrid(*parts.baselineGrid));
    if (parts.facing != nullptr) builder.setFacingPages(facing = boolOf(*parts.facing));
    pageSize = builder.pageSize();
    if (parts.pageSize == nullptr) return;
    const std::vector<double> size = lengthsOf(*parts.pageSize, 2);
    if (!(size[0] > 0 && size[1] > 0)) faultAt(*parts.pageSize, "A page has a width and a height above 0.");
    builder.setPageSize(pageSize = {size[0], size[1]});
}

void LayoutReader::readSwatches() {
    names.swatches = {{"None", swatchNone}, {"Black", swatchBlack}};
    bool blackIsUsual = true;
    for (const JsonValue& value : elementsOf(parts.swatches)) {
        SwatchTarget target;
        readMembers<SwatchTarget>(value, "a swatch", swatchMembers, target);
        if (target.name == nullptr) faultAt(value, "A swatch needs \"name\".");
        if (target.colours != 1) faultAt(value, "A swatch needs either \"cmyk\" or \"rgb\".");
        target.swatch.name = nameOf(*target.name);
        if (target.swatch.name == "Black" && blackIsUsual) {
            blackIsUsual = false;
            names.swatches.erase("Black");
        }
        addName(names.swatches, *target.name, builder.addSwatch(target.swatch), "swatches");
    }
}

void LayoutReader::readStyles() {
    // All names first: a style may be based on one that stands behind it.
    names.paragraphStyles = {{"Basic Paragraph", 0}};
    std::vector<CharacterStyle> characterStyles;
    std::vector<ParagraphStyle> paragraphStyles{{"Basic Paragraph", -1, {}, {}}};
    const auto nameStyles = [](const JsonValue& list, auto& index, auto& styles, bool hasBasic) {
        bool basicIsUsual = hasBasic;
        for (const JsonValue& value : list) {
            requireObject(value);
            const auto name = std::find_if(value.begin(), value.end(), [](const auto& m) { return m.name == "name"; });
            if (name == value.end()) faultAt(value, "A style needs \"name\".");
            const std::string text = nameOf(*name);
            if (basicIsUsual && text == "Basic Paragraph") {
                basicIsUsual = false;
                continue;
            }
            addName(index, *name, static_cast<std::int32_t>(styles.size()), "styles");
            styles.emplace_back().name = text;
        }
    };
    nameStyles(elementsOf(parts.characterStyles), names.characterStyles, characterStyles, false);
    nameStyles(elementsOf(parts.paragraphStyles), names.paragraphStyles, paragraphStyles, true);

    std::vector<const JsonValue*> characterBases(characterStyles.size()), paragraphBases(paragraphStyles.size());
    for (const JsonValue& value : elementsOf(parts.characterStyles)) {
        FormatTarget target(names);
        readFormat(value, "a character style", characterStyleMembers(), target);
        const auto index = static_cast<std::size_t>(namedIndex(names.characterStyles, *target.name, "style"));
        CharacterStyle& style = characterStyles[index];
        style.format = std::move(target.chars);
        if (target.basedOn == nullptr) continue;
        style.basedOn = namedIndex(names.characterStyles, *target.basedOn, "style");
        characterBases[index] = target.basedOn;
    }
    for (const JsonValue& value : elementsOf(parts.paragraphStyles)) {
        FormatTarget target(names);
        readFormat(value, "a paragraph style", paragraphStyleMembers(), target);
        const auto index = static_cast<std::size_t>(namedIndex(names.paragraphStyles, *target.name, "style"));
        ParagraphStyle& style = paragraphStyles[index];
        style.charFormat = std::move(target.chars);
        style.paraFormat = std::move(target.paras);
        if (target.basedOn == nullptr) continue;
        style.basedOn = namedIndex(names.paragraphStyles, *target.basedOn, "style");
        paragraphBases[index] = target.basedOn;
    }
    checkBases(characterStyles, characterBases);
    checkBases(paragraphStyles, paragraphBases);
    for (CharacterStyle& style : characterStyles)
        builder.addCharacterStyle(std::move(style));
    for (ParagraphStyle& style : paragraphStyles)
        builder.addParagraphStyle(std::move(style));
}

void LayoutReader::readLayers() {
    std::vector<Layer> layers;
    for (const JsonValue& value : elementsOf(parts.layers)) {
        LayerTarget target;
        readMembers<LayerTarget>(value, "a layer", layerMembers, target);
        if (target.name == nullptr) faultAt(value, "A layer needs \"name\".");
        target.layer.name = nameOf(*target.name);
        target.layer.uid = uids.uidOf(target.uid);
        layers.push_back(target.layer);
        addName(layerIndex, *target.name, layers.size(), "layers");
    }
    builder.setLayers(layers);
    if (!layers.empty()) return;
    if (parts.layers != nullptr) faultAt(*parts.layers, "A layout needs at least one layer.");
    layerIndex = {{"Layer 1", 1}};
    builder.setLayers({Layer{uids.uidOf(nullptr), "Layer 1"}});
}

void LayoutReader::readMasters() {
    static constexpr Member<SpreadTarget> rows[] = {
        {"uid", keep<SpreadTarget, &SpreadTarget::uid>},     {"nodes", keep<SpreadTarget, &SpreadTarget::nodes>},
        {"name", keep<SpreadTarget, &SpreadTarget::name>},   {"pages", keep<SpreadTarget, &SpreadTarget::pages>},
        {"items", keep<SpreadTarget, &SpreadTarget::items>},
    };
    std::vector<std::pair<SpreadTarget, UID>> made;
    for (const JsonValue& value : elementsOf(parts.masters)) {
        SpreadTarget target;
        readMembers<SpreadTarget>(value, "a master", rows, target);
        if (target.name == nullptr) faultAt(value, "A master needs \"name\".");
        uids.countObjects(value, layerIndex.size() + 1);
        const std::vector<UID> nodes = uids.uidsOf(target.nodes);
        const UID uid = builder.addMaster(nameOf(*target.name), uids.uidOf(target.uid), nodes);
        addName(names.masters, *target.name, uid, "masters");
        made.emplace_back(target, uid);
    }
    // A master may be based on any other, so that their pages come when all have names.
    std::size_t index = 0;
    for (const JsonValue& value : elementsOf(parts.masters)) {
        const auto& [target, spread] = made[index];
        readSpread(value, target, spread, facing ? elementsOf(target.pages).count / 2 : 0);
        ++index;
    }
    checkMasterBases();
}

/// From masters without bases up: each comes when all its bases have come. What never comes stands in a circle, or on
/// one.
void LayoutReader::checkMasterBases() {
    std::unordered_map<UID, std::size_t> openBases, depth;
    std::unordered_map<UID, std::vector<const MasterBase*>> derived;
    for (const MasterBase& edge : masterBases) {
        ++openBases[edge.master];
        derived[edge.base].push_back(&edge);
    }
    std::vector<UID> ready;
    for (const auto& [base, edges] : derived) {
        if (openBases.count(base) == 0) ready.push_back(base);
    }
    std::size_t passed = 0;
    while (!ready.empty()) {
        const UID base = ready.back();
        ready.pop_back();
        for (const MasterBase* edge : derived[base]) {
            ++passed;
            depth[edge->master] = std::max(depth[edge->master], depth[base] + 1);
            if (depth[edge->master] > basedOnDepthLimit) faultTooDeep(*edge->value, "Masters");
            if (--openBases[edge->master] == 0) ready.push_back(edge->master);
        }
    }
    if (passed < masterBases.size()) {
        faultAt(*parts.masters, "Masters are based on each other in a circle; take one of these bases away.");
    }
}

void LayoutReader::readSpreads() {
    static constexpr Member<SpreadTarget> rows[] = {
        {"uid", keep<SpreadTarget, &SpreadTarget::uid>},
        {"nodes", keep<SpreadTarget, &SpreadTarget::nodes>},
        {"pages", keep<SpreadTarget, &SpreadTarget::pages>},
        {"items", keep<SpreadTarget, &SpreadTarget::items>},
    };
    if (parts.pages != nullptr && parts.spreads != nullptr) {
        faultAt(*parts.pages, "A layout has either \"pages\", each on a spread of its own, or \"spreads\".");
    }
    for (const JsonValue& value : elementsOf(parts.spreads)) {
        SpreadTarget target;
        readMembers<SpreadTarget>(value, "a spread", rows, target);
        uids.countObjects(value, layerIndex.size() + 1);
        const std::vector<UID> nodes = uids.uidsOf(target.nodes);
        const std::size_t count = elementsOf(target.pages).count;
        const std::size_t leftCount = pageUids.empty() ? count / 2 : (count + 1) / 2;
        readSpread(value, target, builder.addSpread(uids.uidOf(target.uid), nodes), facing ? leftCount : 0);
    }
    readBoundPages();
}

/// Each page gets a spread of its own, or, where pages face each other, each two but the first.
void LayoutReader::readBoundPages() {
    std::vector<const JsonValue*> waiting;
    const auto finishSpread = [&] {
        if (waiting.empty()) return;
        uids.countObjects(*waiting[0], layerIndex.size() + 1);
        readPages(waiting, builder.addSpread(), facing && !pageUids.empty() ? 1 : 0);
        waiting.clear();
    };
    for (const JsonValue& value : elementsOf(parts.pages)) {
        waiting.push_back(&value);
        if (!facing || pageUids.empty() || waiting.size() == 2) finishSpread();
    }
    finishSpread();
}

/// `leftCount` of the pages lie to the left of where the spread's coordinates begin, unless the file says otherwise.
void LayoutReader::readSpread(const JsonValue& value, const SpreadTarget& target, UID spread, std::size_t leftCount) {
    const JsonValue& list = elementsOf(target.pages);
    if (list.count == 0) faultAt(value, "A spread or master needs \"pages\", at least one.");
    if (list.count > pagesOfSpreadLimit) {
        faultAt(value, "A spread has at most " + std::to_string(pagesOfSpreadLimit) + " pages.");
    }
    std::vector<const JsonValue*> pages;
    for (const JsonValue& page : list)
        pages.push_back(&page);
    readPages(pages, spread, leftCount);
    items.readItems(target.items, spread, {});
}

/// Pages side by side.
void LayoutReader::readPages(const std::vector<const JsonValue*>& values, UID spread, std::size_t leftCount) {
    std::vector<PageTarget> targets;
    double left = 0;
    for (const JsonValue* value : values) {
        targets.push_back(readPage(*value));
        if (targets.size() <= leftCount) left -= boundsOf(targets.back(), 0).width();
    }
    for (const PageTarget& target : targets) {
        const PMRect bounds = boundsOf(target, left);
        addPage(target, spread, bounds);
        left = bounds.right;
    }
}

LayoutReader::PageTarget LayoutReader::readPage(const JsonValue& value) const {
    static constexpr Member<PageTarget> rows[] = {
        {"uid", keep<PageTarget, &PageTarget::uid>},     {"size", keep<PageTarget, &PageTarget::size>},
        {"edges", keep<PageTarget, &PageTarget::edges>}, {"master", keep<PageTarget, &PageTarget::master>},
        {"items", keep<PageTarget, &PageTarget::items>},
    };
    PageTarget target;
    target.value = &value;
    readMembers<PageTarget>(value, "a page", rows, target);
    if (target.edges != nullptr && target.size != nullptr) {
        faultAt(value, "A page has either \"size\" or \"edges\".");
    }
    return target;
}

/// Where the page lies in its spread: as the file says, or to the right of `left`.
PMRect LayoutReader::boundsOf(const PageTarget& target, double left) const {
    if (target.edges != nullptr) {
        const std::vector<double> edges = lengthsOf(*target.edges, 4);
        return {edges[0], edges[1], edges[2], edges[3]};
    }
    if (target.size == nullptr) return {left, 0, left + pageSize.x, pageSize.y};
    const std::vector<double> size = lengthsOf(*target.size, 2);
    return {left, 0, left + size[0], size[1]};
}

void LayoutReader::addPage(const PageTarget& target, UID spread, const PMRect& bounds) {
    const JsonValue& value = *target.value;
    uids.countObjects(value, 1);
    if (std::max({-bounds.left, -bounds.top, bounds.right, bounds.bottom}) > coordinateLimit) {
        faultAt(value, "The page lies more than 10,000,000 points away from where its spread begins.");
    }
    if (!(bounds.width() > 0 && bounds.height() > 0)) faultAt(value, "A page has a width and a height above 0.");
    const UID master = target.master == nullptr ? kInvalidUID : namedIndex(names.masters, *target.master, "master");
    const UID page = builder.addPage(spread, bounds, master, uids.uidOf(target.uid));
    if (!builder.isMasterSpread(spread)) {
        pageUids.push_back(page);
    } else if (master != kInvalidUID) {
        masterBases.push_back({spread, master, target.master});
    }
    items.readItems(target.items, spread, {bounds.left, bounds.top});
}

void LayoutReader::readSections() {
    static constexpr Member<SectionTarget> rows[] = {
        {"page", keep<SectionTarget, &SectionTarget::page>},
        {"prefix", [](SectionTarget& t, const JsonValue& v) { t.section.prefix = stringOf(v); }},
        {"marker", [](SectionTarget& t, const JsonValue& v) { t.section.marker = stringOf(v); }},
        {"startNumber",
         [](SectionTarget& t, const JsonValue& v) {
             t.section.startNumber = static_cast<std::int32_t>(integerOf(v, 0, sectionNumberLimit));
         }},
        {"style",
         [](SectionTarget& t, const JsonValue& v) {
             t.section.numberingStyle = static_cast<std::int32_t>(wordOf(v, numberingStyleWords));
         }},
        {"continues", [](SectionTarget& t, const JsonValue& v) { t.section.continues = boolOf(v); }},
        {"includePrefix", [](SectionTarget& t, const JsonValue& v) { t.section.includePrefix = boolOf(v); }},
    };
    std::int64_t lastPage = 0;
    for (const JsonValue& value : elementsOf(parts.sections)) {
        SectionTarget target;
        readMembers<SectionTarget>(value, "a section", rows, target);
        if (target.page == nullptr) faultAt(value, "A section needs \"page\", the number of its first page.");
        const std::int64_t page = integerOf(*target.page, 1, static_cast<std::int64_t>(pageUids.size()));
        if (page <= lastPage) faultAt(*target.page, "Sections stand in the order of their pages.");
        lastPage = page;
        target.section.startPage = pageUids[static_cast<std::size_t>(page - 1)];
        builder.addSection(target.section);
    }
}

void LayoutReader::readData() {
    if (parts.data == nullptr) return;
    const DataBlocks data = readDataBlocks(*parts.data);
    for (int store = 0; store < 2; ++store) {
        if (data.blocks[store] != nullptr) builder.setDocumentData(store, *data.blocks[store]);
    }
}

}  // namespace tarnova
