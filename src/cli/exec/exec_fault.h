// Why a line of the automation protocol isn't carried out.

#pragma once

#include <stdexcept>
#include <string>

namespace tarnova {

/// Ends a line with an error answer; nothing was run.
class ExecFault : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

}  // namespace tarnova
