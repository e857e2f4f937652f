// Picture files for tests: ImageMagick makes them, so that our readers are tested with another's writers.

#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "tests/engine/toolkit/temp_folder.h"

namespace tarnova {

class PictureFiles : public TempFolder {
 public:
    /// Four squares of 20 x 20 pixels, red and green above blue and gray, worked on by ImageMagick's arguments.
    std::string make(const std::string& arguments, const std::string& name) const {
        const std::string squares = "'(' -size 20x20 xc:red xc:lime +append ')' '(' xc:blue 'xc:gray(60%)' +append ')'";
        return convert(squares + " -append " + arguments, name);
    }
    std::string convert(const std::string& arguments, const std::string& name) const {
        const std::string command = "convert " + arguments + " '" + path(name) + "'";
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        return path(name);
    }
};

}  // namespace tarnova
