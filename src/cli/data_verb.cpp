#include "cli/data_verb.h"

#include <fmt/format.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

#include "cli/engine_client.h"
#include "cli/job_setup.h"
#include "cli/verb.h"
#include "data/data_source.h"
#include "data/key_index.h"
#include "data/quick_setup.h"
#include "definitions/record_def_set.h"

namespace tarnova {

namespace {

using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;
using FieldValues = std::vector<std::pair<std::string, std::string>>;

constexpr std::uint32_t commandGetFieldValue = 525;
constexpr std::uint32_t commandOpenDataFile = 1209;
constexpr std::int32_t statusNoRecord = -6042;

// What a person may call a byte, in the order in which it is shown.
struct byteName {
    std::uint8_t byte;
    const char* name;
};
constexpr byteName delimiterNames[] = {{'\t', "tab"},      {',', "comma"}, {' ', "blank"},
                                       {';', "semicolon"}, {'^', "caret"}, {'|', "bar"}};
constexpr byteName qualifierNames[] = {{'"', "double"}, {'\'', "single"}, {0, "none"}};
constexpr const char* lineEndNames[] = {"CR", "CR LF", "LF"};  // by osType

template <std::size_t count>
std::optional<std::uint8_t> byteOf(const byteName (&names)[count], const std::string& text) {
    for (const byteName& each : names)
        if (text == each.name) return each.byte;
    if (text.size() != 1) return std::nullopt;
    return static_cast<std::uint8_t>(text[0]);
}

template <std::size_t count>
std::string nameOf(const byteName (&names)[count], std::uint8_t byte) {
    for (const byteName& each : names)
        if (byte == each.byte) return each.name;
    return std::string(1, static_cast<char>(byte));
}

int failData(const dataVerbRec& options, errorWord error) {
    sayError(fmt::format("{}: {}", options.path, takeErrorText(error)));
    return exitFailed;
}

int failStatus(const dataVerbRec& options, std::int16_t status) {
    const bool refused = status <= openStatusRefused;
    sayError(refused
                 ? fmt::format("{}: refused; give its --encoding or --delimiter", options.path)
                 : fmt::format("{}: can't be opened; check that it is there and that you may read it", options.path));
    return exitFailed;
}

// Without a header the fields are named by their place.
void numberFields(quickSetupAnalysis& analysis) {
    for (std::size_t i = 0; i < analysis.fields.size(); ++i)
        analysis.fields[i] = {fmt::format("Field {}", i + 1), false};
}

// One data file of a verb: how it is read, and the definition that says so, the session's current one.
struct dataFileRec {
    EngineClient engine;
    quickSetupAnalysis analysis;
    recordDefRec* definition = nullptr;  // until the session's definitions change

    std::uint32_t headerRecords(const dataVerbRec& options) const { return options.noHeader ? 0 : 1; }
};

// What the options say about the file. An exit status when they make no sense.
int readOptions(const dataVerbRec& options, quickSetupKnown& known) {
    if (!options.delimiter.empty()) known.delimiter = byteOf(delimiterNames, options.delimiter);
    if (!options.qualifier.empty()) known.qualifier = byteOf(qualifierNames, options.qualifier);
    if (!options.encoding.empty()) known.dataType = options.encoding == "utf-8" ? dataTypeUtf8 : dataTypeEightBit;
    const bool badDelimiter = !options.delimiter.empty() && !known.delimiter;
    const bool badQualifier = !options.qualifier.empty() && !known.qualifier;
    if (!badDelimiter && !badQualifier) return exitDone;
    sayError(fmt::format("\"{}\" is no {}: give its name or one character",
                         badDelimiter ? options.delimiter : options.qualifier,
                         badDelimiter ? "delimiter" : "qualifier"));
    return exitUsage;
}

// Finds out how the file is read and makes a definition of it the current one.
int recognize(const dataVerbRec& options, dataFileRec& data) {
    quickSetupKnown known;
    if (const int status = readOptions(options, known); status != exitDone) return status;
    const errorWord err = quickSetupAnalyzeAs(options.path.c_str(), known, data.analysis, 0);
    if (err != 0) return failData(options, err);
    if (data.analysis.cancelled) return failStatus(options, openStatusRefused);
    if (options.noHeader) numberFields(data.analysis);
    quickSetupChoices choices;
    choices.detectLineEnd = false;
    data.definition = defineData(options.path, data.analysis, choices);
    if (data.definition == nullptr) return exitFailed;
    if (!chooseKeyField(*data.definition, options.keyField, options.path)) return exitFailed;
    return useDefinition(*data.definition, options.path, !options.noHeader) ? exitDone : exitFailed;
}

// Builds the index without loading it, so that memory stays small for any file.
int buildIndex(const dataVerbRec& options, dataFileRec& data) {
    dataSourceRec source{};
    std::memcpy(source.indexPath, data.definition->databasePath, pathCapacity);
    std::int16_t status = openStatusOpen;
    const errorWord err = keyIndexBuild(*data.definition, source, 1, 0, 0, status, nullptr, 0);
    if (err != 0) return failData(options, err);
    return status < 0 ? failStatus(options, status) : exitDone;
}

// Sees to an index that fits, and reads what it says.
int summarize(const dataVerbRec& options, dataFileRec& data, bool rebuild, indexSummary& summary) {
    bool exists = false, inSync = false;
    errorWord err = dataSourceInSync(data.definition, exists, inSync, nullptr, nullptr, nullptr, 0);
    if (rebuild || !inSync)
        if (const int status = buildIndex(options, data); status != exitDone) return status;
    err = readIndexSummary(data.definition->databasePath, summary, err);
    return err == 0 ? exitDone : failData(options, err);
}

std::uint32_t dataRecords(const dataVerbRec& options, const dataFileRec& data, const indexSummary& summary) {
    const std::uint32_t header = data.headerRecords(options);
    return summary.recordCount > header ? summary.recordCount - header : 0;
}

const char* encodingName(std::int16_t dataType) {
    return dataType == dataTypeUtf8 ? "UTF-8" : "Windows-1252";
}

void printInspection(const dataVerbRec& options, const dataFileRec& data, std::uint32_t records) {
    const quickSetupAnalysis& found = data.analysis;
    fmt::print(
        "encoding:  {}\nlines:     {}\ndelimiter: {}\nqualifier: {}\nrecords:   {}\nkey field: {}\nfields:    {}\n",
        encodingName(found.dataType), lineEndNames[found.osType], nameOf(delimiterNames, found.delimiter),
        nameOf(qualifierNames, found.qualifier), records, pstrView(data.definition->keyField), found.fields.size());
    for (std::size_t i = 0; i < found.fields.size(); ++i)
        fmt::print("{:>6}  {}{}\n", i + 1, found.fields[i].name, found.fields[i].isPicture ? " (picture)" : "");
    if (found.tooManyFields)
        sayError(fmt::format("{}: only the first {} fields can be used", options.path, found.fields.size()));
}

void writeMember(JsonWriter& json, const char* name, const std::string& text) {
    json.Key(name);
    json.String(text);
}

void printInspectionJson(const dataVerbRec& options, const dataFileRec& data, std::uint32_t records) {
    const quickSetupAnalysis& found = data.analysis;
    rapidjson::StringBuffer buffer;
    JsonWriter json(buffer);
    json.StartObject();
    writeMember(json, "file", options.path);
    writeMember(json, "encoding", encodingName(found.dataType));
    writeMember(json, "lines", lineEndNames[found.osType]);
    writeMember(json, "delimiter", nameOf(delimiterNames, found.delimiter));
    writeMember(json, "qualifier", nameOf(qualifierNames, found.qualifier));
    json.Key("records");
    json.Uint(records);
    writeMember(json, "keyField", pstrString(data.definition->keyField));
    json.Key("fields");
    json.StartArray();
    for (const quickSetupField& field : found.fields)
        json.String(field.name);
    json.EndArray();
    json.Key("tooManyFields");
    json.Bool(found.tooManyFields);
    json.EndObject();
    fmt::print("{}\n", buffer.GetString());
}

// A difference between the file and what the options say of it is told and accepted.
bool isOpen(std::int32_t status) {
    constexpr std::int32_t differences[] = {-6053, -6054, -6055};
    return status == 0 || std::find(std::begin(differences), std::end(differences), status) != std::end(differences);
}

int failFetch(const dataVerbRec& options, const dataFileRec& data, std::uint32_t records, std::int32_t status) {
    const std::string& keyField = options.keyField.empty() ? data.analysis.fields[0].name : options.keyField;
    if (status != statusNoRecord)
        sayError(fmt::format("{}: the record can't be read ({})", options.path, status));
    else if (options.record > 0)
        sayError(fmt::format("{}: no record {}; the file has {}", options.path, options.record, records));
    else
        sayError(fmt::format("{}: no record with \"{}\" in field \"{}\"", options.path, options.key, keyField));
    return exitFailed;
}

// The value of a field, and the number of the record, from 1; the command's status.
std::int32_t fetchField(const dataVerbRec& options, const std::string& field, std::string& value,
                        std::uint32_t& record) {
    char* text = nullptr;
    EngineCommand fetch(commandGetFieldValue);
    pstrFromView(fetch.reply.text, sizeof(Str255), field);
    fetch.args.num0 = options.record;
    pstrSet(fetch.args.text0, options.key);
    const std::int32_t status = fetch.item(0, text).run();
    const blockPtr<char> owned(text);
    if (status != 0) return status;
    value.assign(text, fetch.args.num0);
    record = fetch.args.num2;
    return status;
}

void printRecordJson(std::uint32_t number, const FieldValues& values) {
    rapidjson::StringBuffer buffer;
    JsonWriter json(buffer);
    json.StartObject();
    json.Key("record");
    json.Uint(number);
    json.Key("fields");
    json.StartObject();
    for (const auto& [name, value] : values)
        writeMember(json, name.c_str(), value);
    json.EndObject();
    json.EndObject();
    fmt::print("{}\n", buffer.GetString());
}

void printRecord(const dataVerbRec& options, std::uint32_t record, const FieldValues& values) {
    if (options.json) return printRecordJson(record, values);
    if (!options.field.empty()) return fmt::print("{}\n", values[0].second);
    for (const auto& [name, value] : values)
        fmt::print("{}: {}\n", name, value);
}

void printIndexJson(const dataFileRec& data, const indexSummary& summary, std::uint32_t records) {
    rapidjson::StringBuffer buffer;
    JsonWriter json(buffer);
    json.StartObject();
    writeMember(json, "index", data.definition->databasePath);
    json.Key("bytes");
    json.Uint64(summary.fileBytes);
    json.Key("records");
    json.Uint(records);
    json.Key("keys");
    json.Uint(summary.keyCount);
    writeMember(json, "keyField", pstrString(data.definition->keyField));
    json.EndObject();
    fmt::print("{}\n", buffer.GetString());
}

CLI::App& addSubverb(CLI::App& parent, verbContext& context, const std::shared_ptr<dataVerbRec>& options,
                     const char* name, const char* help, int (*run)(const dataVerbRec&)) {
    CLI::App& verb = *parent.add_subcommand(name, help);
    verb.add_option("FILE", options->path, "Delimited text")->required();
    verb.add_option("--delimiter", options->delimiter,
                    "tab, comma, blank, semicolon, caret, bar, or one character. Without it: found out");
    verb.add_option("--qualifier", options->qualifier, "double, single, none, or one character. Without it: found out");
    verb.add_option("--encoding", options->encoding, "Without it: found out")
        ->check(CLI::IsMember({"windows-1252", "utf-8"}));
    verb.add_flag("--no-header", options->noHeader, "The first line is a record; fields are named by their place");
    addJsonFlag(verb, options->json);
    verb.callback([options, &context, run] { context.exitStatus = run(*options); });
    return verb;
}

}  // namespace

int inspectData(const dataVerbRec& options) {
    dataFileRec data;
    indexSummary summary{};
    if (const int status = recognize(options, data); status != exitDone) return status;
    if (const int status = summarize(options, data, false, summary); status != exitDone) return status;
    const std::uint32_t records = dataRecords(options, data, summary);
    if (options.json)
        printInspectionJson(options, data, records);
    else
        printInspection(options, data, records);
    return exitDone;
}

int getData(const dataVerbRec& options) {
    dataFileRec data;
    if (const int status = recognize(options, data); status != exitDone) return status;
    std::uint32_t records = 0, record = 0;
    if (!isOpen(EngineCommand(commandOpenDataFile).item(1, records).run())) {
        sayError(fmt::format("{}: the data can't be read", options.path));
        return exitFailed;
    }
    FieldValues values;
    for (const quickSetupField& field : data.analysis.fields) {
        if (!options.field.empty() && !ascii::equalNoCase(options.field, field.name)) continue;
        std::string& value = values.emplace_back(field.name, "").second;
        const std::int32_t status = fetchField(options, field.name, value, record);
        if (status != 0) return failFetch(options, data, records, status);
    }
    if (values.empty()) {
        sayError(
            fmt::format("{}: no field \"{}\"; `tarnova data inspect` lists the fields", options.path, options.field));
        return exitFailed;
    }
    printRecord(options, record, values);
    return exitDone;
}

int indexData(const dataVerbRec& options) {
    dataFileRec data;
    indexSummary summary{};
    if (const int status = recognize(options, data); status != exitDone) return status;
    if (const int status = summarize(options, data, true, summary); status != exitDone) return status;
    const std::uint32_t records = dataRecords(options, data, summary);
    if (options.json)
        printIndexJson(data, summary, records);
    else
        fmt::print("{}: {} bytes, {} records, {} keys in \"{}\"\n", data.definition->databasePath, summary.fileBytes,
                   records, summary.keyCount, pstrView(data.definition->keyField));
    return exitDone;
}

namespace {

void addNumbers(CLI::App& data, verbContext& context) {
    const auto options = std::make_shared<numberVerbRec>();
    CLI::App& numbers = *data.add_subcommand("numbers", "Make a data file of running numbers");
    numbers.add_option("--start", options->start, "First number")->capture_default_str();
    numbers.add_option("--end", options->end, "Last number; below the first one the numbers go down")->required();
    numbers.add_option("--width", options->width, "Digits at least")->check(CLI::Range(0, 100));
    numbers.add_option("--pad", options->pad, "What fills up to the width")->capture_default_str();
    numbers.add_option("--prefix", options->prefix, "Text in front of each number");
    numbers.add_option("--suffix", options->suffix, "Text behind each number");
    numbers.add_option("-o,--output", options->outputPath, "The file, made anew")->required();
    numbers.footer("Example: tarnova data numbers --end 500 --width 5 --prefix T- -o tickets.txt");
    numbers.callback([options, &context] { context.exitStatus = makeNumbers(*options); });
}

}  // namespace

void addDataVerb(CLI::App& app, verbContext& context) {
    const auto options = std::make_shared<dataVerbRec>();
    CLI::App& data = *app.add_subcommand("data", "Look into a data file, take a record out, build its index");
    data.require_subcommand(1);
    data.footer("Example: tarnova data inspect customers.csv");

    CLI::App& inspect = addSubverb(data, context, options, "inspect",
                                   "Tell encoding, delimiters, fields and number of records", inspectData);
    inspect.footer("Example: tarnova data inspect customers.csv --json");

    CLI::App& get = addSubverb(data, context, options, "get", "Print one record, or one field of it", getData);
    CLI::Option_group& which = *get.add_option_group("record", "Which record");
    which.add_option("--record", options->record, "Number of the record, from 1, the header not counted")
        ->check(CLI::PositiveNumber);
    which.add_option("--key", options->key, "Key of the record; the first that has it");
    which.require_option(1);
    get.add_option("--key-field", options->keyField, "Field that holds the key. Without it: the first");
    get.add_option("--field", options->field, "Field to print. Without it: all");
    get.footer("Example: tarnova data get customers.csv --key C-1042 --field City");

    CLI::App& index =
        addSubverb(data, context, options, "index", "Build the index and say where it is and how big", indexData);
    index.add_option("--key-field", options->keyField, "Field that holds the key. Without it: the first");
    index.footer("Example: tarnova data index customers.csv --key-field Code");

    addNumbers(data, context);
}

}  // namespace tarnova
