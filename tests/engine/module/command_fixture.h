// A fresh engine with a folder of its own, and commands in few words.

#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "data/data_source.h"
#include "definitions/definition_store.h"
#include "engine/module/command_table.h"
#include "engine/module/execute.h"
#include "engine/session/preferences_file.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"
#include "tests/engine/toolkit/recording_alerts.h"
#include "tests/engine/toolkit/temp_folder.h"

namespace tarnova {

class CommandTest : public ::testing::Test {
 protected:
    void SetUp() override {
        sessionReset();
        settleDataFolder(home.path("app"), home.path("roaming"));
        loadPreferences();
        ASSERT_EQ(openDefinitionStore(false, nullptr, 0), 0);
        reply = {};
        args = {};
    }
    void TearDown() override {
        dataSourceCloseAll();
        sessionReset();
    }

    /// Sends the block as `reply` and `args` stand; gives the status.
    std::int32_t send(std::uint32_t number) {
        block = {resultNobodyAnswered, number, &reply, &args};
        reply.status = 77;
        door.Execute(block);
        return reply.status;
    }
    /// The same with these items from 0 on; null ones aren't given.
    std::int32_t send(std::uint32_t number, std::initializer_list<void*> items) {
        args = {};
        unsigned index = 0;
        for (void* const item : items)
            itemAt(args, index++) = item;
        return send(number);
    }

    TempFolder home;
    RecordingAlerts alerts;
    ZavoKelvaneModule door;
    commandBlock block{};
    commandReply reply{};
    commandArgs args{};
};

}  // namespace tarnova
