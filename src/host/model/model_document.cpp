#include "host/model/model_document.h"

#include <utility>

#include "host/model/placed_picture.h"

namespace tarnova {

std::uint64_t newStamp() {
    static std::uint64_t next = 1;
    return next++;
}

std::unique_ptr<DocumentModel> makeDocument() {
    return std::make_unique<ModelDocument>();
}

ModelDocument::ModelDocument() : formats(std::make_shared<DocumentFormats>()) {
    ownUid = uidCounter++;
    lists.layers.push_back({uidCounter++, "Pages", true, false, true});
    lists.layers.push_back({uidCounter++, "Layer 1", true, false, true});
    formats->swatches.push_back({"None", Swatch::Space::none, {0, 0, 0, 0}});
    formats->swatches.push_back({"Black", Swatch::Space::cmyk, {0, 0, 0, 1}});
    formats->paragraphStyles.push_back({"Basic Paragraph", -1, {}, {}});
}

std::unique_ptr<Document> ModelDocument::documentCopy() const {
    auto copy = std::make_unique<ModelDocument>();
    table.forEach([&copy](UID uid, const ObjectSlot& slot) {
        std::visit(
            [&copy, uid](const auto& held) {
                using Held = std::decay_t<decltype(held)>;
                if constexpr (!std::is_same_v<Held, std::monostate>) {
                    copy->table.put(uid, std::make_unique<typename Held::element_type>(*held));
                }
            },
            slot);
    });
    copy->uidCounter = uidCounter;
    copy->ownUid = ownUid;
    copy->tagIdCounter = tagIdCounter;
    copy->lists = lists;
    copy->pages = pages;
    copy->formats = formats;
    copy->composer = composer;
    copy->templateStampValue = templateStampValue;
    copy->documentTitle = documentTitle;
    copy->defaultPageSize = defaultPageSize;
    copy->grid = grid;
    copy->facing = facing;
    copy->folder = folder;
    copy->fileName = fileName;
    copy->revision = revision;
    copy->pagesInFront = pagesInFront;
    copy->pagesBehind = pagesBehind;
    copy->mayWrap = mayWrap;
    copy->unsettled = unsettled;
    return copy;
}

void ModelDocument::markTemplate() {
    if (!unsettled.empty()) settleWraps();
    templateStampValue = newStamp();
}

/// The document leaves the folder from which relative links count.
void ModelDocument::rootLinks() {
    std::vector<UID> pictures;
    table.forEach([&](UID uid, const ObjectSlot&) {
        const PageItem* found = item(uid);
        if (found != nullptr && found->graphic != nullptr) pictures.push_back(uid);
    });
    for (UID uid : pictures) {
        PageItem* picture = table.find<PageItem>(uid);
        if (pathOfGraphic(*picture->graphic, folder) == picture->graphic->filePath) continue;
        auto graphic = std::make_shared<PlacedGraphic>(*picture->graphic);
        graphic->filePath = pathOfGraphic(*graphic, folder);
        picture->graphic = std::move(graphic);
    }
}

void ModelDocument::setLocation(std::string newFolder, std::string newName) {
    if (!folder.empty() && newFolder != folder) rootLinks();
    folder = std::move(newFolder);
    fileName = std::move(newName);
    savedState = state;
}

errorWord ModelDocument::replaceBy(DocumentModel& other) {
    if (sequenceDepth > 0) return errFailed;
    std::shared_ptr<Composer> kept = std::move(composer);
    *this = std::move(static_cast<ModelDocument&>(other));
    composer = std::move(kept);
    return 0;
}

const CharFormat* ModelDocument::resolveChar(const ParagraphAttributes& paragraph, const RunAttributes& run) const {
    return formats->resolveChar(paragraph, run);
}

const ParaFormat* ModelDocument::resolvePara(const ParagraphAttributes& paragraph) const {
    return formats->resolvePara(paragraph);
}

}  // namespace tarnova
