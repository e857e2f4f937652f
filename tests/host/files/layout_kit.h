// Short verbs for tests of the layout file.

#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "host/files/layout_file.h"

namespace tarnova {

/// Opens a layout that must be right.
inline std::unique_ptr<DocumentModel> opened(const std::string& json) {
    layoutError error;
    auto document = readLayout(json, error);
    EXPECT_NE(document, nullptr) << error.line << ": " << error.message << "\n" << json.substr(0, 2000);
    return document;
}

/// A layout of one page with these items.
inline std::string pageWith(const std::string& items) {
    return "{\"tarnovaLayout\": 1, \"pageSize\": [100, 100], \"pages\": [{\"items\": [" + items + "]}]}";
}

/// An item in so many groups.
inline std::string inGroups(int count, const std::string& item) {
    std::string out = item;
    for (int i = 0; i < count; ++i)
        out = "{\"group\": [" + out + "]}";
    return out;
}

/// A text with an item that has a text, and so on, so many times.
inline std::string inTexts(int count) {
    std::string out = "\"a\"";
    for (int i = 0; i < count; ++i)
        out = R"([{"text": ["b", {"item": {"bounds": [0, 0, 5, 5], "text": )" + out + "}}]}]";
    return out;
}

/// A layout with one text frame; `text` is JSON.
inline std::string frameWith(const std::string& text) {
    return pageWith("{\"bounds\": [0, 0, 50, 50], \"text\": " + text + "}");
}

/// That the document's file, opened again, is the same file.
inline void expectStable(const DocumentModel& document) {
    const std::string written = writeLayout(document);
    const auto again = opened(written);
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(writeLayout(*again), written);
}

}  // namespace tarnova
