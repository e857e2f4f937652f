// Writes a document as a layout file.

#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/files/json_writer.h"
#include "host/model/document_model.h"

namespace tarnova {

class LayoutWriter {
 public:
    /// For a file in this folder; an empty one stands for the document's own.
    LayoutWriter(const DocumentModel& itsDocument, std::string itsFolder)
        : document(itsDocument), folder(std::move(itsFolder)) {}
    [[nodiscard]] std::string write();
    /// What was written has groups in groups or texts in texts that no reader takes.
    [[nodiscard]] bool isTooDeep() const { return tooDeep; }

 private:
    /// Contents that more than one object holds, in the order of their first use.
    template <typename Content>
    struct SharedList {
        std::unordered_map<const Content*, std::size_t> uses;
        std::unordered_map<const Content*, std::size_t> index;
        std::vector<const Content*> order;

        void count(const Content* content);
        [[nodiscard]] bool has(const Content* content) const { return index.count(content) != 0; }
    };

    void countShared(UID item);
    void countSharedOf(UID spread);
    void writeHead();
    void writeSwatches();
    void writeStyles();
    void writeLayers();
    void writeShared();
    void writeMasters();
    void writeSpreads();
    void writeSections();
    void writeSpread(const Spread& spread);
    void writePages(const Spread& spread);
    void writeItems(const Spread& spread);
    void writeItem(const PageItem& item, const std::string* layer);
    void writeGroup(const PageItem& item);
    void writeAnchored(UID item);
    void writeFrame(const PageItem& item);
    void writePicture(const PageItem& picture);
    void writeFlags(const PageItem& item);
    void writePlace(const PMMatrix& place);
    void writeStory(const PageItem& frame);
    void writePathText(const Story& story);
    void writeContent(const StoryText& content);
    void writeStoryText(const StoryText& text);
    void writeData(const std::string* kelvane, const std::string* tallyra);
    void writeItemData(const PageItem& item);

    const DocumentModel& document;
    const std::string folder;
    JsonWriter out;
    SharedList<ItemShape> shapes;
    SharedList<StoryText> texts;
    std::size_t groupDepth = 0;  // of the groups around what is written, to the page or text that they are in
    std::size_t anchorDepth = 0;
    bool tooDeep = false;
};

}  // namespace tarnova
