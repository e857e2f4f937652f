// Short verbs for tests of definitions: a state of their own, sets that are discarded, and memory that runs out.

#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>

#include "definitions/ddf.h"
#include "definitions/definition_state.h"

namespace tarnova {

/// A Pascal string for an argument.
class Pascal {
 public:
    Pascal(std::string_view text) { pstrSet(bytes_, text); }
    Pascal(const char* text) : Pascal(std::string_view(text)) {}
    operator const std::uint8_t*() const { return bytes_; }

 private:
    Str255 bytes_{};
};

/// While it lives, the allocation after `allowed` others fails, and all later ones.
class ScarceMemory {
 public:
    explicit ScarceMemory(int allowed) {
        left_ = allowed;
        static const allocatorService scarce = {
            [](std::size_t size) { return left_-- > 0 ? defaultAllocator().allocate(size) : nullptr; },
            [](std::size_t size) { return left_-- > 0 ? defaultAllocator().allocateClear(size) : nullptr; },
            defaultAllocator().sizeOfBlock, defaultAllocator().resize, defaultAllocator().release};
        installAllocator(&scarce);
    }
    ~ScarceMemory() { installAllocator(nullptr); }
    ScarceMemory(const ScarceMemory&) = delete;
    ScarceMemory& operator=(const ScarceMemory&) = delete;

 private:
    static inline int left_ = 0;
};

class DefinitionTest : public testing::Test {
 protected:
    DefinitionTest() {
        installDefinitionState(&state_);
        EXPECT_EQ(
            recordDefSetNew(Pascal("Record Definitions"), "/jobs/Record Definitions", state_.currentDefSet, set_, 0),
            0);
    }
    ~DefinitionTest() override {
        while (state_.currentDefSet != nullptr)
            recordDefSetDiscard(state_.currentDefSet, state_.currentDefSet);
        installDefinitionState(nullptr);
    }

    /// Reads DDF text through a handle into `set_`.
    errorWord read(std::string_view text) {
        const handlePtr handle(newHandle(text.size()));
        if (!text.empty()) std::memcpy(*handle, text.data(), text.size());
        ddfLexerRec lexer{};
        report_ = {};
        const errorWord err = ddfReadStream({noFile, handle.get()}, *set_, lexer, &report_, 0);
        leftInHandle_ = handleSize(handle.get());
        return err;
    }

    static std::string write(const recordDefSetRec& set) {
        const handlePtr handle(newHandle(0));
        EXPECT_EQ(ddfWriteSet(set, {noFile, handle.get()}, 0), 0);
        return {reinterpret_cast<const char*>(*handle), handleSize(handle.get())};
    }

    /// Empties `set_`.
    void startOver() {
        while (set_->definitions != nullptr)
            recordDefRemove(*set_, &set_->definitions->definition);
    }

    recordDefRec* add(std::string_view name) {
        recordDefRec* definition = nullptr;
        EXPECT_EQ(recordDefNew(*set_, Pascal(name), definition, 0), 0);
        return definition;
    }

    recordDefRec* find(std::string_view name) const {
        recordDefRec* definition = nullptr;
        EXPECT_EQ(findRecordDef(set_, Pascal(name), definition, 0), 0);
        return definition;
    }

    /// Names in list order, one behind the other with blanks.
    std::string names() const {
        std::string all;
        recordDefRec* definition = nullptr;
        for (std::int32_t index = 0; recordDefAt(set_, index, definition, 0) == 0 && definition != nullptr; ++index) {
            all += (all.empty() ? "" : " ") + pstrString(definition->name);
        }
        return all;
    }

    /// Makes a definition current.
    recordDefRec& select(std::string_view name) {
        pstrSet(state_.currentDefName, name);
        EXPECT_EQ(reselectCurrentRecordDef(0), 0);
        return *state_.currentRecordDef;
    }

    definitionStateRec state_{};
    recordDefSetRec* set_ = nullptr;
    ddfReadReport report_;
    std::size_t leftInHandle_ = 0;
};

template <typename Record>
std::string namesOf(Record* const* records, std::size_t count) {
    std::string all;
    for (std::size_t index = 0; index < count; ++index) {
        all += (all.empty() ? "" : " ") + pstrString(records[index]->name);
    }
    return all;
}

}  // namespace tarnova
