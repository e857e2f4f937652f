// Pictures that a job couldn't show: how many, and which came first.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarnova {

inline constexpr std::size_t pictureExampleLimit = 5;

struct PictureProblems {
    std::uint64_t missing = 0;
    std::uint64_t damaged = 0;
    /// "missing: flag.png (record 3, page 1)", one for each picture, at most pictureExampleLimit.
    std::vector<std::string> examples;

    /// Adds what stands behind.
    void add(const PictureProblems& more);
    /// Enters an example unless there are enough, or one of the same picture.
    void addExample(const std::string& example);
    /// Asks the engine about the slots that were merged last. `entriesSeen` is the number of the report's pictures that
    /// were asked about before, and goes on.
    [[nodiscard]] bool gather(std::int32_t slots, std::uint32_t signature, std::uint32_t& entriesSeen);

    /// For a process to hand over in front of other bytes; `take` cuts it off again. False when it isn't there.
    [[nodiscard]] std::string bytes() const;
    [[nodiscard]] bool take(std::string_view& bytes);
};

/// The text of an example.
[[nodiscard]] std::string pictureExample(std::string_view problem, std::string_view name, std::int32_t record,
                                         std::string_view page);

}  // namespace tarnova
