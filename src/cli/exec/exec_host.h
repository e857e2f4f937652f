// A line with a request to the host: documents, idle turns, answers to questions, session fields and preferences.

#pragma once

#include "cli/exec/exec_alerts.h"
#include "cli/exec/exec_documents.h"
#include "cli/exec/exec_json.h"

namespace tarnova {

/// Carries out the request and writes the members of its answer. Throws ExecFault, and then nothing was changed.
void runExecHost(const rapidjson::Value& request, ExecDocuments& documents, ExecAlerts& alerts, ExecWriter& json);

}  // namespace tarnova
