// How verbs tell what definitions hold.

#pragma once

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "definitions/record_def_set.h"

namespace tarnova {

using DefinitionWriter = rapidjson::Writer<rapidjson::StringBuffer>;

/// A line for each definition of a set, on standard output.
void printDefinitions(const recordDefSetRec& set);

/// The same as an array of objects.
void writeDefinitions(DefinitionWriter& json, const recordDefSetRec& set);

}  // namespace tarnova
