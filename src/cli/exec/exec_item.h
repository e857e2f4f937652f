// One item of a command's arguments: a buffer of the type that the command's row declares, filled from JSON and written
// as JSON.

#pragma once

#include <array>
#include <string>
#include <variant>
#include <vector>

#include "cli/exec/exec_documents.h"
#include "cli/exec/exec_json.h"
#include "engine/module/command_table.h"
#include "engine/toolkit/id_file.h"
#include "engine/toolkit/memory.h"
#include "engine/toolkit/pm_string.h"

namespace tarnova {

class ExecItem {
 public:
    ExecItem(const commandArgument& argument, const ExecDocuments& documents);
    ~ExecItem();
    ExecItem(const ExecItem&) = delete;
    ExecItem& operator=(const ExecItem&) = delete;

    /// Throws ExecFault that names the item and the type wanted.
    void read(const rapidjson::Value& json);
    /// As a member of the object that is being written.
    void write(ExecWriter& json) const;
    /// What the block's item points at.
    [[nodiscard]] void* address();

 private:
    using PascalBuffer = std::array<std::uint8_t, sizeof(Str255)>;
    using Storage =
        std::variant<std::uint8_t, std::int16_t, std::uint16_t, std::int32_t, std::uint32_t, PMString, PascalBuffer,
                     std::string, char*, const char*, IDFile, UIDRef, UIDList, std::vector<PMString>,
                     std::vector<std::int32_t>, std::vector<std::uint32_t>, std::vector<valueGroup>>;

    [[nodiscard]] static Storage emptyOf(argumentType type);
    void readInto(const rapidjson::Value& json, std::uint8_t& to);
    void readInto(const rapidjson::Value& json, std::int16_t& to);
    void readInto(const rapidjson::Value& json, std::uint16_t& to);
    void readInto(const rapidjson::Value& json, std::int32_t& to);
    void readInto(const rapidjson::Value& json, std::uint32_t& to);
    void readInto(const rapidjson::Value& json, PMString& to);
    void readInto(const rapidjson::Value& json, PascalBuffer& to);
    void readInto(const rapidjson::Value& json, std::string& to);
    void readInto(const rapidjson::Value& json, char*& to);
    void readInto(const rapidjson::Value& json, const char*& to);
    void readInto(const rapidjson::Value& json, IDFile& to);
    void readInto(const rapidjson::Value& json, UIDRef& to);
    void readInto(const rapidjson::Value& json, UIDList& to);
    void readInto(const rapidjson::Value& json, std::vector<PMString>& to);
    void readInto(const rapidjson::Value& json, std::vector<std::int32_t>& to);
    void readInto(const rapidjson::Value& json, std::vector<std::uint32_t>& to);
    void readInto(const rapidjson::Value& json, std::vector<valueGroup>& to);
    const rapidjson::Value& arrayOf(const rapidjson::Value& json) const;
    Document* documentOf(const rapidjson::Value& json) const;

    const commandArgument& argument;
    const ExecDocuments& documents;
    std::string name;
    Storage storage;
};

/// A four-character code from JSON: four characters, or a number.
[[nodiscard]] std::uint32_t signatureFrom(const rapidjson::Value& json, std::string_view what);

}  // namespace tarnova
