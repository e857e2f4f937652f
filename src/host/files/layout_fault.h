// How the readers of this folder give up: thrown inside, turned into a `layoutError` where the folder ends.

#pragma once

#include <stdexcept>
#include <string>

namespace tarnova {

class LayoutFault : public std::runtime_error {
 public:
    LayoutFault(int itsLine, const std::string& message) : std::runtime_error(message), lineNumber(itsLine) {}
    [[nodiscard]] int line() const { return lineNumber; }

 private:
    int lineNumber;
};

}  // namespace tarnova
