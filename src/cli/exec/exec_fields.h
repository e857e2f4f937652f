// The requests "session" and "prefs": fields by name.

#pragma once

#include "cli/exec/exec_json.h"

namespace tarnova {

/// `{"fields":["runStage",...]}`; writes each as a member.
void runSessionRequest(const rapidjson::Value& request, ExecWriter& json);

/// `{"get":[...],"set":{...}}`: sets first, all or none, saves, and writes what is asked for.
void runPreferencesRequest(const rapidjson::Value& request, ExecWriter& json);

}  // namespace tarnova
