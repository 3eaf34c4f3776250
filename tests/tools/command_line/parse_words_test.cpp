#include "tools/command_line/parse_words.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tools/command_line/help.h"

namespace {

// What is said of a command line of a program with the verbs "info", "read" and "show".
std::string words_for(std::vector<std::string> arguments) {
  CLI::App app("", "tool");
  app.require_subcommand(1);
  bool flag = false;
  std::string product;
  std::int32_t size = 0;
  std::vector<std::int32_t> window;
  app.add_flag("--debug", flag);
  CLI::App* info = app.add_subcommand("info");
  info->add_option("PRODUCT", product)->required();
  auto* json = info->add_flag("--json", flag);
  CLI::App* read = app.add_subcommand("read");
  take_range(read->add_option("--size", size), "PIXELS", 16, 8192);
  read->add_option("--window", window)->expected(4)->type_name("COLUMN LINE WIDTH HEIGHT");
  auto* raw = read->add_flag("--raw", flag);
  read->add_flag("--block", flag)->needs(raw);
  info->add_flag("--text", flag)->excludes(json);
  std::vector<std::string> names;
  app.add_subcommand("show")->add_option("PRODUCT [LAYER] OUT.png", names)->expected(2, 3);
  std::reverse(arguments.begin(), arguments.end());
  try {
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    return wrong_use_in_words(app, error);
  }
  return "understood";
}

TEST(ParseWords, AMissingVerbBringsTheListOfThem) {
  EXPECT_EQ("a verb is missing; one of info read show\nSee `tool --help`.", words_for({}));
  EXPECT_EQ("a verb is missing; one of info read show\nSee `tool --help`.", words_for({"--debug"}));
}

TEST(ParseWords, AMisspeltVerbBringsTheOneThatMayBeMeant) {
  EXPECT_EQ("no verb \"inof\"; did you mean \"info\"?\nSee `tool --help`.",
            words_for({"inof", "x"}));
  EXPECT_EQ("no verb \"xylophone\"\nSee `tool --help`.", words_for({"xylophone"}));
}

TEST(ParseWords, AMisspeltOptionBringsTheOneThatMayBeMeant) {
  EXPECT_EQ("info: no option \"--jsno\"; did you mean \"--json\"?\nSee `tool info --help`.",
            words_for({"info", "x", "--jsno"}));
  EXPECT_EQ("info: no option \"--quite\"\nSee `tool info --help`.",
            words_for({"info", "x", "--quite=1"}));
  EXPECT_EQ("no option \"--debgu\"; did you mean \"--debug\"?\nSee `tool --help`.",
            words_for({"--debgu"}));
}

TEST(ParseWords, AnOptionOfTheProgramBehindTheVerbIsToldItsPlace) {
  EXPECT_EQ(
      "info: --debug stands before the verb: tool --debug ... info ...\n"
      "See `tool info --help`.",
      words_for({"info", "x", "--debug"}));
}

TEST(ParseWords, WhatIsMissingIsNamed) {
  EXPECT_EQ("info: PRODUCT is required\nSee `tool info --help`.", words_for({"info"}));
  EXPECT_EQ("read: --window: COLUMN LINE WIDTH HEIGHT must follow\nSee `tool read --help`.",
            words_for({"read", "--window", "1", "2", "3"}));
  EXPECT_EQ("read: --size: PIXELS must follow\nSee `tool read --help`.",
            words_for({"read", "--size"}));
  EXPECT_EQ("show: PRODUCT [LAYER] OUT.png: not all are given\nSee `tool show --help`.",
            words_for({"show", "x"}));
  EXPECT_EQ("read: --block needs --raw\nSee `tool read --help`.", words_for({"read", "--block"}));
}

TEST(ParseWords, WhatIsTooMuchIsNamed) {
  EXPECT_EQ("info: \"y\" is one argument too many\nSee `tool info --help`.",
            words_for({"info", "x", "y"}));
  EXPECT_EQ("info: --json and --text do not go together\nSee `tool info --help`.",
            words_for({"info", "x", "--json", "--text"}));
}

TEST(ParseWords, ANumberThatIsNoneIsTold) {
  for (const auto& [text, why] : {std::pair("abc", "is no number"),
                                  {"12x", "is no number"},
                                  {"1.5", "is no whole number"},
                                  {"99999999999", "is out of range"}}) {
    EXPECT_EQ(std::string("read: --size: \"") + text + "\" " + why + "\nSee `tool read --help`.",
              words_for({"read", "--size", text}));
  }
  EXPECT_EQ("read: --window: \"three\" is no number\nSee `tool read --help`.",
            words_for({"read", "--window", "1", "2", "three", "4"}));
}

}  // namespace
