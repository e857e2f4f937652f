#include "cli/exec/exec_item.h"

#include <fmt/format.h>

#include <limits>

#include "cli/exec/exec_fault.h"

namespace tarnova {

namespace {

template <typename Number>
Number numberFrom(const rapidjson::Value& json, std::string_view what) {
    return static_cast<Number>(
        integerOf(json, what, std::numeric_limits<Number>::min(), std::numeric_limits<Number>::max()));
}

template <std::size_t size>
void takePascal(const rapidjson::Value& json, std::string_view what, std::uint8_t (&field)[size]) {
    const std::string_view text = stringOf(json, what);
    if (text.size() >= size) throw ExecFault(fmt::format("{}: at most {} bytes are wanted", what, size - 1));
    pstrSet(field, text);
}

std::string signatureText(std::uint32_t signature) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8)
        text += static_cast<char>(signature >> shift & 0xFF);
    return signature == 0 ? std::string() : text;
}

/// Writes each kind of buffer as JSON.
struct ItemWriter {
    ExecWriter& json;
    const ExecDocuments& documents;
    const commandArgument& argument;
    std::string_view name;

    void text(std::string_view value) const { writeTextMember(json, name, value); }
    template <typename Number>
    requires std::is_integral_v<Number>
    void operator()(Number value) const {
        if (argument.type == argumentType::signature) return text(signatureText(static_cast<std::uint32_t>(value)));
        writeKey(json, name);
        json.Int64(value);
    }
    void operator()(const PMString& value) const { text(value.view()); }
    void operator()(const std::array<std::uint8_t, sizeof(Str255)>& value) const { text(pstrView(value.data())); }
    void operator()(const std::string& value) const { text(value); }
    void operator()(const char* value) const {
        if (value != nullptr) return text(value);
        writeKey(json, name);
        json.Null();
    }
    void operator()(const IDFile& value) const { text(value.path()); }
    void operator()(const UIDRef& value) const {
        writeKey(json, name);
        if (value.database == nullptr) {
            json.Null();
            return;
        }
        json.StartObject();
        json.Key("document");
        json.Uint(documents.handleOf(value.database));
        if (value.uid != value.database->documentUid()) {
            json.Key("uid");
            json.Uint(value.uid);
        }
        json.EndObject();
    }
    void operator()(const UIDList& value) const {
        writeKey(json, name);
        json.StartObject();
        json.Key("document");
        json.Uint(documents.handleOf(value.database));
        json.Key("uids");
        json.StartArray();
        for (const UID uid : value.uids)
            json.Uint(uid);
        json.EndArray();
        json.EndObject();
    }
    template <typename Element>
    void operator()(const std::vector<Element>& list) const {
        writeKey(json, name);
        json.StartArray();
        for (const Element& element : list)
            one(element);
        json.EndArray();
    }
    void one(const PMString& value) const { writeText(json, value.view()); }
    void one(std::int32_t value) const { json.Int(value); }
    void one(std::uint32_t value) const { writeText(json, signatureText(value)); }
    void one(const valueGroup& group) const {
        json.StartArray();
        for (const linkAndStyleRec& pair : group) {
            json.StartArray();
            writeText(json, pstrView(pair.linkName));
            writeText(json, pstrView(pair.styleName));
            json.EndArray();
        }
        json.EndArray();
    }
};

}  // namespace

std::uint32_t signatureFrom(const rapidjson::Value& json, std::string_view what) {
    if (!json.IsString()) return numberFrom<std::uint32_t>(json, what);
    const std::string_view text = stringOf(json, what);
    if (text.size() != 4) throw ExecFault(fmt::format("{}: a string of four characters is wanted", what));
    std::uint32_t value = 0;
    for (const char character : text)
        value = value << 8 | static_cast<std::uint8_t>(character);
    return value;
}

ExecItem::ExecItem(const commandArgument& itsArgument, const ExecDocuments& itsDocuments)
    : argument(itsArgument),
      documents(itsDocuments),
      name(argumentName(itsArgument)),
      storage(emptyOf(itsArgument.type)) {}

ExecItem::~ExecItem() {
    if (char** const text = std::get_if<char*>(&storage)) freeBlock(*text);
}

ExecItem::Storage ExecItem::emptyOf(argumentType type) {
    switch (type) {
        case argumentType::u8:
            return std::uint8_t{0};
        case argumentType::i16:
            return std::int16_t{0};
        case argumentType::u16:
            return std::uint16_t{0};
        case argumentType::i32:
            return std::int32_t{0};
        case argumentType::u32:
        case argumentType::signature:
            return std::uint32_t{0};
        case argumentType::string:
            return PMString();
        case argumentType::pascal:
            return PascalBuffer{};
        case argumentType::cString:
            return std::string();
        case argumentType::ownedText:
            return static_cast<char*>(nullptr);
        case argumentType::constantText:
            return static_cast<const char*>(nullptr);
        case argumentType::file:
            return IDFile();
        case argumentType::uidRef:
            return UIDRef();
        case argumentType::uidList:
            return UIDList();
        case argumentType::strings:
            return std::vector<PMString>();
        case argumentType::numbers:
            return std::vector<std::int32_t>();
        case argumentType::signatures:
            return std::vector<std::uint32_t>();
        case argumentType::valueGroups:
            return std::vector<valueGroup>();
    }
    return std::uint8_t{0};
}

void ExecItem::read(const rapidjson::Value& json) {
    std::visit([&](auto& to) { readInto(json, to); }, storage);
}

void ExecItem::write(ExecWriter& json) const {
    std::visit(ItemWriter{json, documents, argument, name}, storage);
}

void* ExecItem::address() {
    if (auto* const text = std::get_if<std::string>(&storage)) return text->data();
    if (auto* const text = std::get_if<PascalBuffer>(&storage)) return text->data();
    return std::visit([](auto& value) -> void* { return &value; }, storage);
}

const rapidjson::Value& ExecItem::arrayOf(const rapidjson::Value& json) const {
    if (!json.IsArray()) throw ExecFault(fmt::format("{}: an array is wanted, not {}", name, kindOf(json)));
    return json;
}

Document* ExecItem::documentOf(const rapidjson::Value& json) const {
    if (!json.IsObject())
        throw ExecFault(fmt::format("{}: an object with a document is wanted, not {}", name, kindOf(json)));
    return &documents.at(integerMember(json, "document", 0, UINT32_MAX));
}

void ExecItem::readInto(const rapidjson::Value& json, std::uint8_t& to) {
    to = numberFrom<std::uint8_t>(json, name);
}
void ExecItem::readInto(const rapidjson::Value& json, std::int16_t& to) {
    to = numberFrom<std::int16_t>(json, name);
}
void ExecItem::readInto(const rapidjson::Value& json, std::uint16_t& to) {
    to = numberFrom<std::uint16_t>(json, name);
}
void ExecItem::readInto(const rapidjson::Value& json, std::int32_t& to) {
    to = numberFrom<std::int32_t>(json, name);
}
void ExecItem::readInto(const rapidjson::Value& json, std::uint32_t& to) {
    const bool isSignature = argument.type == argumentType::signature;
    to = isSignature ? signatureFrom(json, name) : numberFrom<std::uint32_t>(json, name);
}
void ExecItem::readInto(const rapidjson::Value& json, PMString& to) {
    to.set(stringOf(json, name));
}
void ExecItem::readInto(const rapidjson::Value& json, PascalBuffer& to) {
    Str255 text;
    takePascal(json, name, text);
    std::copy(std::begin(text), std::end(text), to.begin());
}
void ExecItem::readInto(const rapidjson::Value& json, std::string& to) {
    to = plainStringOf(json, name);
}
void ExecItem::readInto(const rapidjson::Value&, char*&) {
    throw ExecFault(fmt::format("{}: the command only gives it out", name));
}
void ExecItem::readInto(const rapidjson::Value&, const char*&) {
    throw ExecFault(fmt::format("{}: the command only gives it out", name));
}
void ExecItem::readInto(const rapidjson::Value& json, IDFile& to) {
    to = IDFile(plainStringOf(json, name));
}
void ExecItem::readInto(const rapidjson::Value& json, UIDRef& to) {
    to = {};
    if (json.IsNull()) return;
    Document* const document = documentOf(json);
    requireMembers(json, {"document", "uid"});
    const rapidjson::Value* const uid = memberOf(json, "uid");
    to = uid == nullptr ? document->ref() : UIDRef{document, numberFrom<UID>(*uid, name + " uid")};
}
void ExecItem::readInto(const rapidjson::Value& json, UIDList& to) {
    to = {documentOf(json), {}};
    requireMembers(json, {"document", "uids"});
    const rapidjson::Value* const uids = memberOf(json, "uids");
    if (uids == nullptr) throw ExecFault(fmt::format("{}: the member \"uids\" is missing", name));
    for (const rapidjson::Value& uid : arrayOf(*uids).GetArray())
        to.uids.push_back(numberFrom<UID>(uid, name));
}
void ExecItem::readInto(const rapidjson::Value& json, std::vector<PMString>& to) {
    for (const rapidjson::Value& text : arrayOf(json).GetArray())
        to.emplace_back(stringOf(text, name));
}
void ExecItem::readInto(const rapidjson::Value& json, std::vector<std::int32_t>& to) {
    for (const rapidjson::Value& number : arrayOf(json).GetArray())
        to.push_back(numberFrom<std::int32_t>(number, name));
}
void ExecItem::readInto(const rapidjson::Value& json, std::vector<std::uint32_t>& to) {
    for (const rapidjson::Value& signature : arrayOf(json).GetArray())
        to.push_back(signatureFrom(signature, name));
}
void ExecItem::readInto(const rapidjson::Value& json, std::vector<valueGroup>& to) {
    for (const rapidjson::Value& group : arrayOf(json).GetArray()) {
        valueGroup& pairs = to.emplace_back();
        for (const rapidjson::Value& pair : arrayOf(group).GetArray()) {
            if (arrayOf(pair).Size() != 2) throw ExecFault(fmt::format("{}: pairs of link and style are wanted", name));
            linkAndStyleRec& names = pairs.emplace_back();
            takePascal(pair[0], name, names.linkName);
            takePascal(pair[1], name, names.styleName);
        }
    }
}

}  // namespace tarnova
