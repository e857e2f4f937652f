// The list of a layout's links, for the verbs that show it.

#pragma once

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "host/model/document_model.h"

namespace tarnova {

/// A line for each link on standard output, first of merge mode, then of price mode.
void printTagLines(DocumentModel& layout);
/// The same as a JSON array.
void writeTagArray(rapidjson::Writer<rapidjson::StringBuffer>& json, DocumentModel& layout);

}  // namespace tarnova
