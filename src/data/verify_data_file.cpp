#include "data/delimiter_scan.h"

#include <algorithm>
#include <string>

#include "data/data_source.h"
#include "data/questions.h"
#include "data/record_parser.h"
#include "definitions/record_def_set.h"
#include "engine/session/preferences.h"

namespace tarnova {

namespace {

constexpr std::uint16_t messageCustomDelimiter = 50;
constexpr std::uint16_t recordDelimiterNames[] = {40, 41, 42, 43};         // by osType; the last for any other
constexpr std::uint16_t fieldDelimiterNames[] = {45, 46, 47, 49, 48, 50};  // by fileType; the last for any other

struct difference {
    bool found;
    std::uint16_t question;  // message with "^1" and "^2"
    std::uint16_t remark;    // message for the report
    Str255 first;
    Str255 second;
};

void nameRecordDelimiter(std::uint8_t* out, std::int16_t osType) {
    messageText(out, recordDelimiterNames[osType >= 0 && osType < osTypeFromFile ? osType : osTypeFromFile]);
}

void nameFieldDelimiter(std::uint8_t* out, std::int16_t fileType, const recordDefRec& definition) {
    if (fileType == fileTypeCustom && definition.fDelimiter[0] != 0) {
        pstrCopy(out, definition.fDelimiter);
        return;
    }
    const bool isNamed = fileType >= 0 && fileType < fileTypeCustom;
    messageText(out, isNamed ? fieldDelimiterNames[fileType] : messageCustomDelimiter);
}

std::int32_t highestFieldNumber(const recordDefRec& definition) {
    std::int32_t highest = 0;
    for (std::uint16_t i = 0; i < fieldCountOf(definition); ++i)
        highest = std::max<std::int32_t>(highest, definition.fields[i].fieldNumber);
    return highest;
}

void findDifferences(const recordDefRec& definition, const delimiterDecision& data, difference (&list)[4]) {
    difference& record = list[0];
    record.found = definition.osType != osTypeFromFile && data.osType != definition.osType;
    record.question = 39, record.remark = 53;
    nameRecordDelimiter(record.first, definition.osType);
    nameRecordDelimiter(record.second, data.osType);

    difference& field = list[1];
    field.found = data.fileType != definition.fileType;
    field.question = 44, field.remark = 54;
    nameFieldDelimiter(field.first, definition.fileType, definition);
    nameFieldDelimiter(field.second, data.fileType, definition);

    difference& tooMany = list[2];
    tooMany.found = data.fieldCount > recordFieldCapacity;
    tooMany.question = 52, tooMany.remark = 55;
    pstrSet(tooMany.first, std::to_string(recordFieldCapacity));
    pstrSet(tooMany.second, std::to_string(data.fieldCount));

    difference& missing = list[3];
    const std::int32_t highest = highestFieldNumber(definition);
    missing.found = highest > static_cast<std::int64_t>(data.fieldCount);
    missing.question = 51, missing.remark = 56;
    pstrSet(missing.first, std::to_string(highest));
    pstrSet(missing.second, std::to_string(data.fieldCount));
}

}  // namespace

errorWord verifyDataFile(const recordDefRec& definition, std::uint8_t interactive, const char* path, bool& goOn,
                         std::int16_t& openStatus, std::uint8_t* report, errorWord priorError) {
    if (priorError != 0) return priorError;
    goOn = true;
    if (appPrefs().verifyDataFiles == 0) return 0;

    delimiterCounts counts;
    delimiterDecision data{};
    errorWord err = scanDelimiters(path, counts, 0);
    err = decideDelimiters(counts, definition, data, err);
    if (err != 0) return err;

    difference list[4] = {};
    findDifferences(definition, data, list);
    bool differs = false;
    for (const difference& each : list) {
        if (!each.found) continue;
        differs = true;
        Str255 text;
        messageText(text, each.question);
        if (interactive != 0 && goOn && !nobodyAnswers()) goOn = askChoice(text, false, 1, each.first, each.second);
        messageText(text, each.remark);
        if (report != nullptr) pstrAppend(report, text);
    }
    if (differs) openStatus = goOn ? openStatusDifference : openStatusRefused;
    return 0;
}

}  // namespace tarnova
