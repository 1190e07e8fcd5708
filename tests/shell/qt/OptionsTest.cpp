// The command line of tarnline.
#include <gtest/gtest.h>

#include "shell/qt/Options.h"

namespace tarn {
namespace {

TEST(Options, NoArgumentsMeanNoPortsAndNoScript) {
  const ParsedOptions p = ParseOptions({});
  EXPECT_TRUE(p.error.empty());
  EXPECT_TRUE(p.options.ports.empty());
  EXPECT_FALSE(p.options.demo);
  EXPECT_EQ(p.options.statusAfterMs, -1);
  EXPECT_EQ(p.options.quitAfterMs, -1);
}

TEST(Options, PortsKeepTheirOrderInBothForms) {
  const ParsedOptions p = ParseOptions({"--port", "/dev/pts/7", "--port=/dev/ttyV0", "--demo"});
  ASSERT_TRUE(p.error.empty()) << p.error;
  EXPECT_EQ(p.options.ports, (std::vector<std::string>{"/dev/pts/7", "/dev/ttyV0"}));
  EXPECT_TRUE(p.options.demo);
}

TEST(Options, ScriptingOptionsTakeMilliseconds) {
  const ParsedOptions p = ParseOptions({"--status-after", "2500", "--quit-after=3000",
                                        "--screenshot", "shot.png", "--print-changes"});
  ASSERT_TRUE(p.error.empty()) << p.error;
  EXPECT_EQ(p.options.statusAfterMs, 2500);
  EXPECT_EQ(p.options.quitAfterMs, 3000);
  EXPECT_EQ(p.options.screenshot, "shot.png");
  EXPECT_TRUE(p.options.printChanges);
}

TEST(Options, HelpInEitherSpelling) {
  EXPECT_TRUE(ParseOptions({"--help"}).options.help);
  EXPECT_TRUE(ParseOptions({"-h"}).options.help);
  const std::string usage = Usage();
  for (const char* option : {"--port", "--demo", "--status-after", "--quit-after", "--screenshot",
                             "--print-changes", "Radio ID", "Baud Rate"}) {
    EXPECT_NE(usage.find(option), std::string::npos) << option;
  }
}

TEST(Options, BadCommandLinesSayWhatIsWrong) {
  struct Case {
    std::vector<std::string> args;
    std::string says;
  };
  const std::vector<Case> cases = {
      {{"--bogus"}, "unknown option '--bogus'"},
      {{"/dev/ttyUSB0"}, "unknown option '/dev/ttyUSB0'"},
      {{"--port"}, "--port needs a value"},
      {{"--port="}, "--port needs a value"},
      {{"--port", "--demo"}, "--port needs a value"},
      {{"--status-after", "soon"}, "--status-after needs milliseconds"},
      {{"--quit-after", "-5"}, "--quit-after needs milliseconds"},
      {{"--quit-after", "99999999999"}, "--quit-after needs milliseconds"},
      {{"--demo=yes"}, "--demo takes no value"},
  };
  for (const Case& c : cases) {
    const ParsedOptions p = ParseOptions(c.args);
    EXPECT_NE(p.error.find(c.says), std::string::npos) << c.args.front() << ": " << p.error;
  }
}

}  // namespace
}  // namespace tarn
