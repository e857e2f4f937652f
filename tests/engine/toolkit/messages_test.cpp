#include "engine/toolkit/messages.h"

#include <gtest/gtest.h>

#include "engine/toolkit/pstring.h"
#include "engine/toolkit/toolkit_state.h"
#include "tests/engine/toolkit/recording_alerts.h"
#include "tests/engine/toolkit/temp_folder.h"

namespace tarnova {
namespace {

class Messages : public testing::Test {
 protected:
    void SetUp() override { installToolkitState(&state_); }
    void TearDown() override { installToolkitState(nullptr); }
    const std::uint8_t* text(std::string_view s) {
        pstrSet(text_, s);
        return text_;
    }
    const std::uint8_t* param(std::string_view s) {
        pstrSet(param_, s);
        return param_;
    }
    std::string shown() const { return service_.shown.empty() ? "(nothing)" : service_.shown.back().text; }

    toolkitStateRec state_;
    RecordingAlerts service_;
    Str255 text_ = {}, param_ = {};
};

TEST_F(Messages, NumbersOutsideTheTablesShowNothing) {
    for (const errorWord number : {errorWord{0}, errorWord{378}, errorWord{65535}}) {
        reportError(nullptr, number);
        EXPECT_EQ(reportErrorParams(nullptr, number, param("x")), 0) << number;
    }
    EXPECT_TRUE(service_.shown.empty());
    Str255 out = {3, 'o', 'l', 'd'};
    messageText(out, 0);
    EXPECT_EQ(out[0], 0);
    messageText(out, 237);
    EXPECT_EQ(out[0], 0);
    messageText(out, 18);
    EXPECT_EQ(pstrView(out), "Default Definition");
}

TEST_F(Messages, MarkersAreFilledOnce) {
    struct testRow {
        const char *text, *p1, *result;
    };
    const testRow rows[] = {
        {"file ^1 is ^x gone", "a.csv", "file a.csv is  gone"},
        {"^1^1", "x", "xx"},
        {"^1", "^1^2", "^1^2"},
        {"none ^2.", "x", "none ."},
        {"end ^", "x", "end "},
        {"^éa", "x", "a"},
    };
    for (const auto& [template_, p1, result] : rows) {
        EXPECT_EQ(reportErrorParams(text(template_), 0, param(p1)), 1);
        EXPECT_EQ(shown(), result);
    }
}

TEST_F(Messages, TheSurfaceReportsAndClears) {
    state_.engineError = errDataFileMissing;
    pstrSet(state_.pendingErrorParam, "cards.csv");
    surfaceError();
    EXPECT_NE(shown().find("\"cards.csv\""), std::string::npos) << shown();
    EXPECT_EQ(service_.shown.back().key, "kZavoErrStr64Key");
    EXPECT_EQ(state_.engineError, 0);
    EXPECT_EQ(state_.pendingErrorParam[0], 0);
    surfaceError();
    state_.engineError = errorOfCode(-5);  // a code of the file layer has no text
    surfaceError();
    EXPECT_EQ(service_.shown.size(), 1u);
    EXPECT_EQ(state_.engineError, 0);
}

TEST_F(Messages, UnattendedErrorsGoToTheLog) {
    const TempFolder folder;
    struct testRow {
        std::uint8_t unattended, show;
        std::size_t alerts;
        const char* log;
    };
    for (const auto& [unattended, show, alerts, log] :
         {testRow{0, 0, 1, "(no file)"}, {1, 0, 0, "oops\r\n"}, {1, 1, 1, "oops\r\n"}, {0, 1, 1, "(no file)"}}) {
        const std::string name = "log" + std::to_string(unattended) + std::to_string(show);
        state_.unattended = unattended;
        state_.showAlertsUnattended = show;
        state_.runLogPath = folder.path(name);
        service_.shown.clear();
        reportErrorString(PMString("oops"));
        EXPECT_EQ(service_.shown.size(), alerts) << name;
        EXPECT_EQ(folder.bytesOf(name), log);
    }
}

TEST_F(Messages, AlertsShowEvenWhenTheyAreOff) {
    service_.setShowAlerts(false);
    reportErrorKey("kZavoErrorReadingTransTable", nullptr, nullptr);
    EXPECT_TRUE(service_.wasShown);
    EXPECT_FALSE(service_.showAlerts()) << "off again";
    service_.wasShown = false;
    state_.unattended = 1;
    askChoice(text("Go?"), true, 1);
    EXPECT_TRUE(service_.wasShown) << "a question is not silenced";
    EXPECT_FALSE(service_.showAlerts());
}

TEST_F(Messages, ChoicesNameTheirButtons) {
    service_.answer = 1;
    EXPECT_TRUE(askChoice(text("Replace ^1?"), true, 2, param("it")));
    const alertRec yesNo = service_.shown.back();
    EXPECT_EQ(yesNo.text, "Replace it?");
    EXPECT_EQ(yesNo.buttons, (std::vector<std::string>{"Yes", "No"}));
    EXPECT_EQ(yesNo.defaultButton, 2);
    service_.answer = 2;
    EXPECT_FALSE(askChoiceKey("kZavoRulesDisabledWarningKey", false, 1));
    EXPECT_EQ(service_.shown.back().buttons, (std::vector<std::string>{"Continue", "Abort"}));
    EXPECT_EQ(service_.shown.back().key, "kZavoRulesDisabledWarningKey");
    EXPECT_NE(shown(), "kZavoRulesDisabledWarningKey");
    installAlertService(nullptr);
    EXPECT_FALSE(askChoice(PMString("Go?"), true, 2)) << "the silent service takes the default";
    EXPECT_TRUE(askChoice(PMString("Go?"), true, 1));
}

TEST_F(Messages, PictureProblemHandsThePathBack) {
    service_.picture = pictureAnswer::chooseFile;
    service_.path = "/pics/b.eps";
    std::string chosen;
    EXPECT_EQ(askPictureProblem(text("^1 in ^2"), param("a"), nullptr, nullptr, &chosen), pictureAnswer::chooseFile);
    EXPECT_EQ(chosen, "/pics/b.eps");
    EXPECT_EQ(service_.problems.back().text, "a in ");
    EXPECT_EQ(askPictureProblem(text("x"), nullptr, nullptr, nullptr, nullptr), pictureAnswer::goOn)
        << "without a place for the path there is no such button";
    EXPECT_FALSE(service_.problems.back().mayChooseFile);
    service_.path.clear();
    EXPECT_EQ(askPictureProblem(text("x"), nullptr, nullptr, nullptr, &chosen), pictureAnswer::goOn)
        << "no file chosen";
    service_.picture = pictureAnswer::noPrompt;
    EXPECT_EQ(askPictureProblem(text("x"), nullptr, nullptr, nullptr, &chosen), pictureAnswer::noPrompt);
}

TEST_F(Messages, StatusWindow) {
    const PMString title("Go");
    EXPECT_EQ(statusDialog(title, 0, false, true, 7), 7);
    EXPECT_EQ(statusDialog(title, 0, true, true, 0), 0);
    EXPECT_EQ(statusDialog(title, 40, true, false, 0), 0);
    EXPECT_EQ(statusDialog(title, 180, true, false, 0), 0);
    EXPECT_EQ(statusDialog(title, 50, true, false, 9), 9);
    EXPECT_EQ(statusDialog(title, -1, true, false, 9), 9);
    EXPECT_EQ(service_.status, "open Go;detail;40;100;close;") << "with an error only the close does its work";
}

}  // namespace
}  // namespace tarnova
