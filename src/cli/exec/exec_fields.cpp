#include "cli/exec/exec_fields.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>

#include "engine/session/preference_names.h"
#include "engine/session/preferences_file.h"
#include "engine/session/session.h"

namespace tarnova {

namespace {

struct numberField {
    std::string_view name;
    std::int64_t (*value)(const sessionRec&);
};

#define TARNOVA_SESSION_FIELD(field)                                                               \
    {                                                                                              \
#field, [](const sessionRec& current) { return static_cast<std::int64_t>(current.field); } \
    }

constexpr numberField numberFields[] = {
    TARNOVA_SESSION_FIELD(engineMode),
    TARNOVA_SESSION_FIELD(mergeAttached),
    TARNOVA_SESSION_FIELD(priceAttached),
    TARNOVA_SESSION_FIELD(runStage),
    TARNOVA_SESSION_FIELD(armedState),
    TARNOVA_SESSION_FIELD(engineRunType),
    TARNOVA_SESSION_FIELD(savedRunType),
    TARNOVA_SESSION_FIELD(selectedDriver),
    TARNOVA_SESSION_FIELD(inRun),
    TARNOVA_SESSION_FIELD(mergePassActive),
    TARNOVA_SESSION_FIELD(cancelRun),
    TARNOVA_SESSION_FIELD(stageDone),
    TARNOVA_SESSION_FIELD(jobValue),
    TARNOVA_SESSION_FIELD(jobPercent),
    TARNOVA_SESSION_FIELD(unattended),
    TARNOVA_SESSION_FIELD(showAlertsUnattended),
    TARNOVA_SESSION_FIELD(mergeOn),
    TARNOVA_SESSION_FIELD(priceStart),
    TARNOVA_SESSION_FIELD(priceActive),
    TARNOVA_SESSION_FIELD(priceBatch),
    TARNOVA_SESSION_FIELD(panelsStale),
    TARNOVA_SESSION_FIELD(rangeFirst),
    TARNOVA_SESSION_FIELD(rangeLast),
    TARNOVA_SESSION_FIELD(runFirst),
    TARNOVA_SESSION_FIELD(runLast),
    TARNOVA_SESSION_FIELD(walkFirstPage),
    TARNOVA_SESSION_FIELD(walkLastPage),
    TARNOVA_SESSION_FIELD(totalRecords),
    TARNOVA_SESSION_FIELD(skipFirst),
    TARNOVA_SESSION_FIELD(stepBy),
    TARNOVA_SESSION_FIELD(recordPassMode),
    TARNOVA_SESSION_FIELD(recordsToDo),
    TARNOVA_SESSION_FIELD(recordsDone),
    TARNOVA_SESSION_FIELD(recordBase),
    TARNOVA_SESSION_FIELD(slotTarget),
    TARNOVA_SESSION_FIELD(slotCount),
    TARNOVA_SESSION_FIELD(allLinkCount),
    TARNOVA_SESSION_FIELD(frameLinkCount),
    TARNOVA_SESSION_FIELD(textLinkCount),
    TARNOVA_SESSION_FIELD(pictureLinkCount),
    TARNOVA_SESSION_FIELD(highestSequence),
    TARNOVA_SESSION_FIELD(sequencesInUse),
    TARNOVA_SESSION_FIELD(engineError),
    TARNOVA_SESSION_FIELD(dataFolderInApp),
    TARNOVA_SESSION_FIELD(hasNumberLink),
    TARNOVA_SESSION_FIELD(actionFrameCount),
    TARNOVA_SESSION_FIELD(languageIsEnglish),
};

#undef TARNOVA_SESSION_FIELD

void writeSessionField(ExecWriter& json, std::string_view name) {
    const sessionRec& current = session();
    const auto* const number = std::find_if(std::begin(numberFields), std::end(numberFields),
                                            [name](const numberField& field) { return field.name == name; });
    if (number != std::end(numberFields)) {
        writeKey(json, name);
        json.Int64(number->value(current));
    } else if (name == "currentDefName") {
        writeTextMember(json, name, pstrView(current.currentDefName));
    } else if (name == "currentDataFilePath") {
        writeTextMember(json, name, current.currentDataFilePath);
    } else if (name == "dataFolder") {
        writeTextMember(json, name, current.dataFolder);
    } else if (name == "runLogPath") {
        writeTextMember(json, name, current.runLogPath);
    } else if (name == "monthNames") {
        writeKey(json, name);
        json.StartArray();
        for (const PMString& month : current.monthNames)
            writeText(json, month.view());
        json.EndArray();
    } else if (name == "recordList") {
        writeKey(json, name);
        json.StartArray();
        for (const std::int32_t record : current.recordList)
            json.Int(record);
        json.EndArray();
    } else {
        throw ExecFault(fmt::format("the session has no field \"{}\"", name));
    }
}

struct numberLimits {
    std::int64_t lowest, highest;
};
numberLimits limitsOf(preferenceType type) {
    switch (type) {
        case preferenceType::u8:
            return {0, UINT8_MAX};
        case preferenceType::i16:
            return {INT16_MIN, INT16_MAX};
        case preferenceType::u16:
            return {0, UINT16_MAX};
        case preferenceType::i32:
            return {INT32_MIN, INT32_MAX};
        default:
            return {0, UINT32_MAX};
    }
}

preferenceField fieldNamed(std::string_view name) {
    const preferenceField field = findPreference(name);
    if (field.name.empty())
        throw ExecFault(fmt::format("the preferences have no field \"{}\"; an offset is given as \"8627:u8\"", name));
    return field;
}

void setField(appPrefsRec& prefs, const preferenceField& field, const rapidjson::Value& value) {
    auto* const at = reinterpret_cast<std::uint8_t*>(&prefs) + field.offset;
    if (field.type == preferenceType::pascal || field.type == preferenceType::text) {
        const std::string_view text = plainStringOf(value, field.name);
        if (text.size() > field.size - 1)
            throw ExecFault(fmt::format("{}: at most {} bytes are wanted", field.name, field.size - 1));
        std::memset(at, 0, field.size);
        if (field.type == preferenceType::pascal) *at = static_cast<std::uint8_t>(text.size());
        std::memcpy(at + (field.type == preferenceType::pascal ? 1 : 0), text.data(), text.size());
        return;
    }
    const auto [lowest, highest] = limitsOf(field.type);
    const std::int64_t number = integerOf(value, field.name, lowest, highest);
    std::memcpy(at, &number, field.size);  // little-endian, as the record is
}

void writeField(ExecWriter& json, const preferenceField& field) {
    const auto* const at = reinterpret_cast<const std::uint8_t*>(&appPrefs()) + field.offset;
    if (field.type == preferenceType::pascal) return writeTextMember(json, field.name, pstrView(at));
    if (field.type == preferenceType::text) {
        const auto* const text = reinterpret_cast<const char*>(at);
        return writeTextMember(json, field.name, {text, strnlen(text, field.size)});
    }
    std::int64_t number = 0;
    std::memcpy(&number, at, field.size);
    if (field.type == preferenceType::i16) number = static_cast<std::int16_t>(number);
    if (field.type == preferenceType::i32) number = static_cast<std::int32_t>(number);
    writeKey(json, field.name);
    json.Int64(number);
}

}  // namespace

void runSessionRequest(const rapidjson::Value& request, ExecWriter& json) {
    requireMembers(request, {"host", "fields"});
    const rapidjson::Value* const fields = memberOf(request, "fields");
    if (fields == nullptr || !fields->IsArray()) throw ExecFault("fields: an array is wanted");
    for (const rapidjson::Value& name : fields->GetArray())
        writeSessionField(json, stringOf(name, "fields"));
}

void runPreferencesRequest(const rapidjson::Value& request, ExecWriter& json) {
    requireMembers(request, {"host", "get", "set"});
    const rapidjson::Value* const get = memberOf(request, "get");
    if (get != nullptr && !get->IsArray()) throw ExecFault("get: an array is wanted, not " + kindOf(*get));
    const rapidjson::Value* const set = memberOf(request, "set");
    if (set != nullptr && !set->IsObject()) throw ExecFault("set: an object is wanted, not " + kindOf(*set));
    std::vector<preferenceField> wanted;
    if (get != nullptr)
        for (const rapidjson::Value& name : get->GetArray())
            wanted.push_back(fieldNamed(stringOf(name, "get")));
    if (set != nullptr) {
        const auto changed = std::make_unique<appPrefsRec>(appPrefs());
        forEachMember(*set, [&](std::string_view name, const rapidjson::Value& value) {
            setField(*changed, fieldNamed(name), value);
        });
        appPrefs() = *changed;
        savePreferences();
    }
    for (const preferenceField& field : wanted)
        writeField(json, field);
}

}  // namespace tarnova
