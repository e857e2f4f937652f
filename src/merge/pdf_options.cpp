#include "merge/pdf_options.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "document/item_data.h"
#include "engine/session/session.h"
#include "engine/toolkit/byte_order.h"

namespace tarnova {

namespace {

constexpr char optionsName[] = "pdfImportOptions";
constexpr std::size_t oldFormBytes = 4;

/// The values of the preferences' popup, 1 to 7, as the host's.
std::uint32_t cropOfPreference(std::uint32_t value) {
    constexpr std::uint32_t crops[] = {0, 0, 7, 2, 3, 4, 5, 6};
    return value < std::size(crops) ? crops[value] : 0;
}

pdfPlacePrefsRec defaultOptions() {
    return {1, cropOfPreference(appPrefs().pdfPlaceCrop), appPrefs().pdfPlaceTransparent};
}

/// The member of an object, or null.
const rapidjson::Value* memberOf(const rapidjson::Value& object, const char* name) {
    return object.IsObject() && object.HasMember(name) ? &object[name] : nullptr;
}

void takeNumber(const rapidjson::Value& object, const char* name, std::uint32_t& value) {
    const rapidjson::Value* const number = memberOf(object, name);
    if (number != nullptr && number->IsUint()) value = number->GetUint();
}

void takeJson(std::string_view text, pdfPlacePrefsRec& options) {
    rapidjson::Document json;
    json.Parse<rapidjson::kParseIterativeFlag>(text.data(), text.size());
    const rapidjson::Value* const stored = json.HasParseError() ? nullptr : memberOf(json, optionsName);
    if (stored == nullptr) return;
    takeNumber(*stored, "pageNumber", options.page);
    takeNumber(*stored, "cropTo", options.crop);
    const rapidjson::Value* const ground = memberOf(*stored, "transparentBackground");
    if (ground != nullptr && ground->IsBool()) options.transparent = ground->GetBool() ? 1 : 0;
}

}  // namespace

pdfPlacePrefsRec framePdfOptions(UIDRef frame) {
    pdfPlacePrefsRec options = defaultOptions();
    const auto entry = itemDataView(frame, ItemDataPlace::pageItem, itemDataPdfPage, session().engineMode);
    if (!entry) return options;
    if (entry->size() == oldFormBytes) {
        options.page = loadBig32(entry->data());
    } else {
        takeJson(*entry, options);
    }
    return options;
}

errorWord setFramePdfOptions(UIDRef frame, const pdfPlacePrefsRec& options, errorWord priorError) {
    if (priorError != 0) return priorError;
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> json(buffer);
    json.StartObject();
    json.Key(optionsName);
    json.StartObject();
    json.Key("version");
    json.String("2");
    json.Key("pageNumber");
    json.Uint(options.page);
    json.Key("cropTo");
    json.Uint(options.crop);
    json.Key("transparentBackground");
    json.Bool(options.transparent != 0);
    json.EndObject();
    json.EndObject();
    const std::uint16_t done = itemDataSet(frame, ItemDataPlace::pageItem, itemDataPdfPage, buffer.GetString(),
                                           buffer.GetSize(), session().engineMode);
    return done != 0 ? errorWord{0} : errFailed;
}

}  // namespace tarnova
