#include "rules/rule_wizard.h"

#include <gtest/gtest.h>

#include "naming/file_names.h"
#include "session_fixture.h"

namespace quorvel::testing {
namespace {

struct RuleWizardTest : ::testing::Test, TestSession {
  RuleWizardTest() { start(), wizard.setID(0); }
  RuleWizard wizard{session.filters, ui};

  std::string shown() const {
    const auto [heading, subheading, label] = wizard.texts();
    return heading + "|" + subheading + "|" + label;
  }
  std::string stored() const { return read("data/Quorvel/filters.dat"); }
};

TEST_F(RuleWizardTest, StepsFollowEachOtherByTheAction) {
  const std::string conditions = "Step 1 - Filter Conditions|Specify the critera of this filter|";
  const std::string options = "Step 2 - Filter Options|Select what this filter will do|";
  const std::string move = "Step 3 - File Path|Select where files will me moved to|Directory to move new files to:";
  const std::string copy = "Step 3 - File Path|Select where files will me copied to|Directory to copy new files to:";
  const std::string third = "Step 3 - File Name|Specify the new file name format|";
  const std::string fourth = "Step 4 - File Name|Specify the new file name format|";
  EXPECT_EQ(shown() + wizard.title(), conditions + "Add Filter Wizard");
  const struct {
    int action;
    char go;
    const char* path;
    std::string then;
  } moves[] = {{Rename, '>', "", options},       {Rename, '<', "", conditions},
               {Rename, '>', "", options},       {Rename, '>', "", third},
               {Rename, '<', "", options},       {MoveAndRename, '>', "", move},
               {MoveAndRename, '>', "D:", move}, {MoveAndRename, '<', "", options},
               {CopyAndRename, '>', "", copy},   {CopyAndRename, '>', "/tv", fourth},
               {CopyAndRename, '<', "D:", copy}, {CopyAndRename, '>', "/tv", fourth}};
  for (const auto& [action, go, path, then] : moves) {
    const bool could_go_back = wizard.can_go_back();
    EXPECT_EQ(could_go_back, shown() != conditions);
    wizard.form.action = action, wizard.form.path = path;
    const bool refused = shown() == then;
    EXPECT_EQ(go == '>' ? wizard.next() : wizard.back(), !refused);
    EXPECT_EQ(shown(), then);
    EXPECT_EQ(ui.messages, std::vector<std::string>(refused ? 1 : 0, "Path not valid: You must enter a complete path"));
    ui.messages.clear();
  }
  EXPECT_EQ(wizard.form.mask, "[show] - [s]x[ee] - [title]");
  EXPECT_TRUE(wizard.next() && wizard.is_stored() && !wizard.can_go_back());
  EXPECT_EQ(shown(),
            "Filter Added|You have successfully added a filter|The following filter has been successfully added:");
  EXPECT_EQ(stored(),
            "1\tTrue\t\t*\t\t[show] - [s]x[ee] - [title]\tShow Name Equals Anything\t0\t1\r\n"
            "3\tTrue\t\t*\t" +
                with_separator("/tv") + "\t[show] - [s]x[ee] - [title]\tShow Name Equals Anything\t0\t1\r\n");
  EXPECT_EQ(ui.filters.size(), 2U);
  EXPECT_TRUE(wizard.next());
  EXPECT_EQ(wizard.step(), RuleWizard::End);
}

TEST_F(RuleWizardTest, EditsARuleAndKeepsWhatItDoesNotShow) {
  session.filters.at(1).path = "/old/";
  wizard.setID(1);
  EXPECT_EQ(wizard.title(), std::string("Edit Filter Wizard"));
  EXPECT_EQ(wizard.form, (RuleForm{0, true, "*", Rename, "/old/", "[show] - [s]x[ee] - [title]"}));
  wizard.form = {RuleForm::FileType, false, "AVI", Rename, "/old/", "[title]"};
  wizard.showstep(RuleWizard::Summary);
  EXPECT_EQ(shown(),
            "Filter Edited|You have successfully edited a filter|The following filter has been successfully edited:");
  EXPECT_EQ(stored(), "1\tTrue\tavi\t*\t\t[title]\tFile Type Doesn't Equal AVI\t2\t1\r\n");
  EXPECT_EQ(wizard.rule().description, "File Type Doesn't Equal AVI");
  wizard.setID(1);
  wizard.form.mask = "a\tb";  // which the file cannot hold
  EXPECT_FALSE(wizard.showstep(RuleWizard::Summary) || wizard.is_stored());
  EXPECT_EQ(ui.messages.back(), "Unable to save filter: The filter could not be saved. The log says why.");
  EXPECT_EQ(session.filters.at(1).mask + ui.filters[0].cells[2], "[title][title]");
  wizard.setID(2);  // no such rule
  EXPECT_EQ(wizard.form, RuleForm());
}

TEST(RuleForm, ShowsTheConditionThatTheDescriptionNames) {
  using F = RuleForm;
  const AFilter both{.description = "File Type Equals mkv",
                     .action = 3,
                     .path = "/tv/",
                     .mask = "m",
                     .showName = "lost",
                     .showNameCondition = 2,
                     .fileType = "mkv",
                     .fileTypeCondition = 1};
  AFilter by_name = both, only_type = both, other = both;
  by_name.description = "Show Name Doesn't Equal lost";
  only_type.showName = "", only_type.description = "x", only_type.fileTypeCondition = 7;
  other.showName = other.fileType = "", other.action = 9, other.showNameCondition = 0;
  EXPECT_EQ(rule_form(both), (F{F::FileType, true, "mkv", CopyAndRename, "/tv/", "m"}));
  EXPECT_EQ(rule_form(by_name), (F{F::ShowName, false, "lost", CopyAndRename, "/tv/", "m"}));
  EXPECT_EQ(rule_form(only_type), (F{F::FileType, false, "mkv", CopyAndRename, "/tv/", "m"}));
  EXPECT_EQ(rule_form(other), (F{F::ShowName, true, "", Rename, "/tv/", "m"}));
}

}  // namespace
}  // namespace quorvel::testing
