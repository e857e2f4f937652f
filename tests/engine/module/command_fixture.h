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
        ASSERT_EQ(openDefinitionStore(0), 0);
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

    /// Makes the definition "Customers" current: comma file, UTF-8, key field Code, links Code, City and Nowhere, whose
    /// field the definition doesn't have.
    void useCustomers() {
        IDFile ddf(home.file("customers.ddf", customersDdf));
        ASSERT_EQ(send(1405, {&ddf}), 0);
        Str255 name;
        pstrSet(name, "Customers");
        ASSERT_EQ(send(1207, {nullptr, name}), 0);
    }
    /// The same with a data file of three records behind a header; the last has no city.
    void openCustomers() {
        useCustomers();
        IDFile data(home.file("customers.csv", customersData));
        std::uint32_t count = 0;
        ASSERT_EQ(send(1209, {&data, &count}), 0);
        ASSERT_EQ(count, 3U);
    }

    static constexpr const char* customersDdf =
        "\"Customers\" recordDefinition; TARNOVAJNT signature; 1:\"Code\", 2:\"City\" fieldName; \"Code\" keyField;\n"
        "1 dataType; 1 fileType; 2 osType; TRUE \"\\\"\" textQualifier;\n"
        "\"City\" extractionRecord; \"City\" field; 2 nodata; 1 deleteline; \"Dear \" prefix; \"of \\\"A\\\"\" notes;\n"
        "\"Code\" extractionRecord; \"Code\" field; 1 type;\n"
        "\"Nowhere\" extractionRecord; \"Country\" field;\n";
    static constexpr const char* customersData = "Code,City\nA1,Graz\nB2,M\u00fcnchen\nC3,\n";

    TempFolder home;
    RecordingAlerts alerts;
    ZavoKelvaneModule door;
    commandBlock block{};
    commandReply reply{};
    commandArgs args{};
};

}  // namespace tarnova
