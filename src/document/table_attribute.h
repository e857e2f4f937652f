// The attribute that a variable table carries: whose it is, an identity, and bytes of the engine's.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "engine/toolkit/types.h"

namespace tarnova {

/// Operations in the order in which hosts know them. Texts are UTF-8.
class INokDataTagTableAttr {
 public:
    virtual ~INokDataTagTableAttr() = default;
    /// The store: "Kelvane" or "Tallyra".
    [[nodiscard]] virtual const std::string& ownerName() const = 0;
    virtual void setOwnerName(std::string name) = 0;
    [[nodiscard]] virtual const std::string& highlightMode() const = 0;
    virtual void setHighlightMode(std::string mode) = 0;
    [[nodiscard]] virtual const std::string& highlightColour() const = 0;
    virtual void setHighlightColour(std::string colour) = 0;
    [[nodiscard]] virtual const std::string& spare() const = 0;
    virtual void setSpare(std::string spare) = 0;
    /// The four texts in one: "<Kelvane_Highlight_Green_Spare>".
    [[nodiscard]] virtual std::string label() const = 0;
    virtual void setTagId(std::uint32_t id) = 0;
    [[nodiscard]] virtual std::size_t dataSize() const = 0;
    /// Valid as long as the attribute is unchanged.
    [[nodiscard]] virtual std::string_view data() const = 0;
    /// A block of the caller, who frees it with freeBlock; null when there is no data, or no memory.
    [[nodiscard]] virtual std::byte* copyData() const = 0;
    virtual void setData(std::string_view bytes) = 0;
};

class NokDataTagTableAttr final : public INokDataTagTableAttr {
 public:
    [[nodiscard]] const std::string& ownerName() const override { return owner; }
    void setOwnerName(std::string name) override { owner = std::move(name); }
    [[nodiscard]] const std::string& highlightMode() const override { return mode; }
    void setHighlightMode(std::string newMode) override { mode = std::move(newMode); }
    [[nodiscard]] const std::string& highlightColour() const override { return colour; }
    void setHighlightColour(std::string newColour) override { colour = std::move(newColour); }
    [[nodiscard]] const std::string& spare() const override { return spareText; }
    void setSpare(std::string newSpare) override { spareText = std::move(newSpare); }
    [[nodiscard]] std::string label() const override;
    void setTagId(std::uint32_t newId) override { id = newId; }
    [[nodiscard]] std::uint32_t tagId() const { return id; }
    [[nodiscard]] std::size_t dataSize() const override { return bytes.size(); }
    [[nodiscard]] std::string_view data() const override { return bytes; }
    [[nodiscard]] std::byte* copyData() const override;
    void setData(std::string_view newBytes) override { bytes = newBytes; }

    /// The stream form, all numbers of 32 bits and big-endian: the identity, the four texts (each its size in bytes and
    /// the bytes), the size of the data, the data.
    [[nodiscard]] std::string toStream() const;
    /// Takes an attribute off the front of `stream`. A stream that ends early gives errFailed and changes nothing, the
    /// stream included.
    [[nodiscard]] errorWord fromStream(std::string_view& stream, errorWord priorError);

 private:
    std::string owner;
    std::string mode;
    std::string colour;
    std::string spareText;
    std::uint32_t id = 0;
    std::string bytes;
};

}  // namespace tarnova
