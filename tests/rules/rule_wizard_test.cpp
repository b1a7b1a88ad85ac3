#include "rules/rule_wizard.h"

#include <gtest/gtest.h>

#include "naming/file_names.h"
#include "queue/rule_preview.h"
#include "rules/presets.h"
#include "session_fixture.h"

namespace quorvel::testing {
namespace {

struct RuleWizardTest : ::testing::Test, TestSession {
  RuleWizardTest() { start(), wizard.setID(0); }
  RuleWizard wizard{session.filters, ui};

  std::string shown() const {
    const auto [heading, subheading, label] = wizard.texts();
    return heading + "|" + subheading + "|" + label + (wizard.can_go_back() ? "|Back\n" : "\n");
  }
  std::string stored() const { return read("data/Quorvel/filters.dat"); }
};

TEST_F(RuleWizardTest, StepsFollowEachOtherByTheAction) {
  std::string seen = wizard.title() + (": " + shown());
  const struct {
    int action;
    char go;
    const char* path;
  } moves[] = {{Rename, '>', ""},
               {Rename, '>', ""},
               {Rename, '<', ""},
               {MoveAndRename, '>', ""},
               {MoveAndRename, '>', "films"},
               {CopyAndRename, '<', ""},
               {CopyAndRename, '>', ""},
               {CopyAndRename, '>', "/tv"},
               {CopyAndRename, '<', "D:"},
               {CopyAndRename, '>', "/tv"}};
  for (const auto& [action, go, path] : moves) {
    wizard.form.action = action, wizard.form.path = path;
    if (!(go == '>' ? wizard.next() : wizard.back())) seen += ui.messages.back() + " ";
    seen += shown();
  }
  EXPECT_TRUE(wizard.next() && wizard.is_stored());
  const std::string
      options = "Step 2 - Filter Options|Select what this filter will do||Back\n",
      move = "Step 3 - File Path|Select where files will me moved to|Directory to move new files to:|Back\n",
      copy = "Step 3 - File Path|Select where files will me copied to|Directory to copy new files to:|Back\n",
      refused = "Path not valid: You must enter a complete path ",
      name = " - File Name|Specify the new file name format||Back\n";
  EXPECT_EQ(
      seen + shown(),
      "Add Filter Wizard: Step 1 - Filter Conditions|Specify the critera of this filter|\n" + options + "Step 3" +
          name + options + move + refused + move + options + copy + "Step 4" + name + copy + "Step 4" + name +
          "Filter Added|You have successfully added a filter|The following filter has been successfully added:\n");
  EXPECT_EQ(stored(), "3\tTrue\t\t*\t" + with_separator(with_native_separators("/tv")) +
                          "\t[show] - [s]x[ee] - [title]\tShow Name Equals Anything\t0\t1\r\n"
                          "1\tTrue\t\t*\t\t[show] - [s]x[ee] - [title]\tShow Name Equals Anything\t0\t1\r\n");
  EXPECT_EQ(wizard.place_text(), "It stands above \"Show Name Equals Anything\", which takes every file that is left.");
  EXPECT_EQ(wizard.place(), 1);
  EXPECT_EQ(ui.filters[0].cells[0] + "|" + ui.filters[1].cells[0] + "|" + ui.filters[1].tip,
            "Show Name Equals Anything|Never used: Show Name Equals Anything|Show Name Equals Anything: "
            "\"Show Name Equals Anything\" above it takes every file that fits it.");
  EXPECT_TRUE(wizard.next() && wizard.step() == RuleWizard::End);
}

TEST_F(RuleWizardTest, EditsARuleAndKeepsWhatItDoesNotShow) {
  AFilter& rule = session.filters.at(1);
  const auto form = [&](const char* name, int name_condition, const char* type, int type_condition) {
    rule.showName = name, rule.showNameCondition = name_condition;
    rule.fileType = type, rule.fileTypeCondition = type_condition;
    wizard.setID(1);
    return wizard.form;
  };
  rule.path = "/old/", rule.mask = "m";
  EXPECT_EQ(form("lost", 2, "mkv", 1), (RuleForm{RuleForm::ShowName, false, "lost", Rename, "/old/", "m"}));
  EXPECT_EQ(form("", 0, "mkv", 7), (RuleForm{RuleForm::FileType, false, "mkv", Rename, "/old/", "m"}));
  rule.description = "File Type Equals mkv", rule.action = CopyAndRename;
  EXPECT_EQ(form("lost", 2, "mkv", 1), (RuleForm{RuleForm::FileType, true, "mkv", CopyAndRename, "/old/", "m"}));
  rule.action = 9;
  EXPECT_EQ(form("", 0, "", 0), (RuleForm{RuleForm::ShowName, true, "", Rename, "/old/", "m"}));
  EXPECT_STREQ(wizard.title(), "Edit Filter Wizard");
  wizard.form = {RuleForm::FileType, false, "AVI", Rename, "/old/", "[title]"};
  EXPECT_TRUE(wizard.next() && wizard.next() && wizard.next());
  EXPECT_EQ(shown(),
            "Filter Edited|You have successfully edited a filter|The following filter has been successfully edited:\n");
  EXPECT_EQ(stored(), "1\tTrue\tavi\t\t\t[title]\tFile Type Doesn't Equal AVI\t2\t0\r\n");
  EXPECT_EQ(wizard.rule().description, "File Type Doesn't Equal AVI");
  wizard.setID(1);
  wizard.form.action = SymbolicLinkAndRename, wizard.form.path = "/l", wizard.form.existing = Existing::Skip;
  EXPECT_TRUE(wizard.showstep(RuleWizard::Summary));
  EXPECT_EQ(stored(), "5\tTrue\tavi\t\t" + with_native_separators("/l/") +
                          "\t[title]\tFile Type Doesn't Equal avi\t2\t0\tskip\r\n");
  wizard.setID(1);
  EXPECT_EQ(wizard.form.existing, Existing::Skip);
  wizard.form.mask = "a\tb";  // which the file cannot hold
  EXPECT_FALSE(wizard.showstep(RuleWizard::Summary) || wizard.is_stored());
  EXPECT_EQ(ui.messages.back(), "Unable to save filter: The filter could not be saved. The log says why.");
  EXPECT_EQ(session.filters.at(1).mask + ui.filters[0].cells[2], "[title][title]");
  wizard.setID(2);  // no such rule
  EXPECT_EQ(wizard.form, RuleForm());
}

TEST_F(RuleWizardTest, APresetPutsItsFoldersBelowTheChosenOne) {
  const auto used = [&](int action, const std::string& path) {
    wizard.form = {};
    wizard.form.action = action, wizard.form.path = path;
    wizard.use(*preset_named("kodi"));
    EXPECT_EQ(wizard.form.mask, preset_named("kodi")->mask);
    return wizard.form.path;
  };
  const std::string below = with_native_separators("/tv/[show]{ ([year])}/Season [ss]");
  EXPECT_EQ(used(Rename, ""), "");
  for (const char* const chosen : {"/tv", "/tv/", "/tv/[show]", "/tv/{[year]}/of [show]/[s]"}) {
    EXPECT_EQ(used(MoveAndRename, chosen), below) << chosen;
  }
  EXPECT_EQ(used(CopyAndRename, "").substr(0, 6), "[show]");
  EXPECT_EQ(preset_named("nobody"), nullptr);
  wizard.setID(1);
  wizard.form.action = HardLinkAndRename, wizard.form.path = "", wizard.form.mask = "";
  EXPECT_EQ(wizard.draft().path + wizard.draft().mask + wizard.draft().description,
            std::string(default_mask) + "Show Name Equals Anything");
  wizard.form.path = "/tv";
  EXPECT_EQ(wizard.draft().path, with_native_separators("/tv/"));
  EXPECT_TRUE(wizard.next() && wizard.next());
  EXPECT_EQ(shown(), "Step 3 - File Path|Select where links will be made|Directory for the links:|Back\n");
}

TEST(RulePreview, ShowsWhatTheRuleMakesOfTheFileAndWhatIsWrong) {
  const auto shown = [](int action, const std::string& path, const std::string& mask, const QueueItem* item = nullptr,
                        bool exact = false) {
    AFilter rule = rule_for_all(action, path, mask);
    if (item != nullptr) rule.showNameCondition = DoesNotEqual;
    const RulePreview preview = preview_of(rule, item, exact);
    std::string all = (preview.is_example ? "" : preview.old_name + " -> ") + preview.folder + preview.new_name;
    for (const std::string& remark : preview.remarks) all += "|" + remark;
    return all;
  };
  const std::string mask = "[title]";
  EXPECT_EQ(shown(Rename, "tv/", "[show]{ ([year])} - [s]x[ee]{ [abs]}{ [country]}{ [dated]}"),
            "The Harbour Lights (2015) - 1x02.mkv");
  EXPECT_EQ(shown(Rename, "", "[title] {[abs] [date] [country] [id] [group]}", nullptr, true),
            "The Pilot Boat 2 2015-09-13 GB 101 NTb.mkv");
  EXPECT_EQ(shown(SymbolicLinkAndRename, "/tv/[show]/[e]", mask),
            with_native_separators("/tv/The Harbour Lights/[e]/The Pilot Boat.mkv") +
                "|\"[e]\" means nothing in a folder and stays as it is.");
  EXPECT_EQ(shown(CopyAndRename, "tv", mask), "|The rule's folder \"" + with_native_separators("tv/") +
                                                  "\" begins neither at the root or a drive nor with \"~\".");
  EXPECT_EQ(shown(MoveAndRename, "/", mask + "/[e]"),
            with_native_separators("/") + "The Pilot Boat/2.mkv|No file's name can hold \"/\".");
  QueueItem item = example_item(false);
  item.filename = "a.AVI", item.episode_title = "Two";
  EXPECT_EQ(shown(Rename, "", mask, &item), "a.AVI -> Two.avi|The rule is not for this file.");
  item.show_id = 1;
  EXPECT_EQ(shown(Rename, "", "[title] {[id]}", &item, true).substr(0, 18), "a.AVI -> Two 1.avi");
  item.episode_title = "";
  EXPECT_EQ(shown(Rename, "", mask, &item), "The Pilot Boat.mkv");
}

}  // namespace
}  // namespace quorvel::testing
