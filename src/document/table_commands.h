// The command that takes the attribute off tables.

#pragma once

#include <vector>

#include "document/commands.h"

namespace tarnova {

/// What NokClearTableOverridesCmd works on.
struct NokClearTableOverridesCmdData {
    std::vector<UID> tables;
};

class NokClearTableOverridesCmd final : public ICommand {
 public:
    explicit NokClearTableOverridesCmd(NokClearTableOverridesCmdData itsData) : data(std::move(itsData)) {}
    [[nodiscard]] std::string_view name() const override { return "Clear Table Overrides"; }
    /// errFailed when a table takes no commands; those in front of it have lost their attribute then.
    [[nodiscard]] errorWord Do(Document& document) override;

 private:
    NokClearTableOverridesCmdData data;
};

}  // namespace tarnova
