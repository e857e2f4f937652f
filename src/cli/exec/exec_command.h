// A line with a command: its block from JSON, through a door of the engine, and the answer.

#pragma once

#include "cli/exec/exec_alerts.h"
#include "cli/exec/exec_documents.h"
#include "cli/exec/exec_json.h"

namespace tarnova {

/// Runs the command of a request and writes the members of its answer. Throws ExecFault before anything was run.
void runExecCommand(const rapidjson::Value& request, const ExecDocuments& documents, ExecAlerts& alerts,
                    ExecWriter& json);

}  // namespace tarnova
