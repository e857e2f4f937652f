// Picture files for tests: ImageMagick makes them, so that our readers are tested with another's writers.

#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "tests/engine/toolkit/temp_folder.h"

namespace tarnova {

/// A PDF file of two pages of 200 x 100 points: an empty one, and one with these entries and this content. Readers
/// find its objects without a table.
inline std::string pdfOf(const std::string& pageMembers, const std::string& content) {
    return "%PDF-1.7\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n2 0 obj<</Type/Pages/Kids[3 0 R 4 0 R]/Count 2"
           "/MediaBox[0 0 200 100]>>endobj\n3 0 obj<</Type/Page/Parent 2 0 R>>endobj\n4 0 obj<</Type/Page/Parent 2 0 R"
           "/Contents 5 0 R" +
           pageMembers + ">>endobj\n5 0 obj<</Length " + std::to_string(content.size()) + ">>stream\n" + content +
           "\nendstream endobj\ntrailer<</Root 1 0 R>>\n%%EOF\n";
}

class PictureFiles : public TempFolder {
 public:
    /// Four squares of 20 x 20 pixels, red and green above blue and gray, worked on by ImageMagick's arguments.
    std::string make(const std::string& arguments, const std::string& name) const {
        const std::string squares = "'(' -size 20x20 xc:red xc:lime +append ')' '(' xc:blue 'xc:gray(60%)' +append ')'";
        return convert(squares + " -append " + arguments, name);
    }
    std::string makeBytes(const std::string& arguments, const std::string& name) const {
        make(arguments, name);
        return bytesOf(name);
    }
    std::string convert(const std::string& arguments, const std::string& name) const {
        const std::string command = "convert " + arguments + " '" + path(name) + "'";
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        return path(name);
    }
};

}  // namespace tarnova
