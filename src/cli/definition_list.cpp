#include "cli/definition_list.h"

#include <fmt/format.h>

#include "cli/job_setup.h"

namespace tarnova {

namespace {

template <typename Visit>
void forEachDefinition(const recordDefSetRec& set, Visit visit) {
    const recordDefNode* node = set.definitions;
    if (node == nullptr) return;
    do {
        visit(node->definition);
        node = node->next;
    } while (node != set.definitions);
}

void writeDefinition(DefinitionWriter& json, const recordDefRec& definition) {
    json.StartObject();
    json.Key("name");
    json.String(shownName(pstrView(definition.name)));
    json.Key("fields");
    json.Uint(fieldCountOf(definition));
    json.Key("links");
    json.Uint(extractionCount(definition));
    json.Key("searchCriteria");
    json.Uint(searchCriteriaCount(definition));
    json.Key("styles");
    json.Uint(styleCount(definition));
    json.EndObject();
}

std::string counted(std::uint16_t count, std::string_view one, std::string_view many) {
    return fmt::format("{} {}", count, count == 1 ? one : many);
}

}  // namespace

void printDefinitions(const recordDefSetRec& set) {
    forEachDefinition(set, [](const recordDefRec& definition) {
        fmt::print("{}: {}, {}, {}, {}\n", shownName(pstrView(definition.name)),
                   counted(fieldCountOf(definition), "field", "fields"),
                   counted(extractionCount(definition), "link", "links"),
                   counted(searchCriteriaCount(definition), "search criteria record", "search criteria records"),
                   counted(styleCount(definition), "price style", "price styles"));
    });
}

void writeDefinitions(DefinitionWriter& json, const recordDefSetRec& set) {
    json.StartArray();
    forEachDefinition(set, [&](const recordDefRec& definition) { writeDefinition(json, definition); });
    json.EndArray();
}

}  // namespace tarnova
