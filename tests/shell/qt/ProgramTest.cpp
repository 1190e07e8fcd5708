// The real tarnline program as a child process on the offscreen platform.
//
// The program is looked for beside the test program's build folder (src/shell/qt/tarnline), or at
// the path in TARNLINE_BINARY.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <memory>
#include <string>
#include <vector>

#include "simradio/SimRadio.h"

namespace tarn {
namespace {

constexpr int kPatienceMs = 20000;  // a failure bound only

QString Binary() {
  const QString given = qEnvironmentVariable("TARNLINE_BINARY");
  if (!given.isEmpty()) return given;
  return QCoreApplication::applicationDirPath() + "/../src/shell/qt/tarnline";
}

// A started program with the offscreen platform, in a folder of its own (DEBUG.TXT lands there).
struct Child {
  explicit Child(const QStringList& args) {
    EXPECT_TRUE(QFileInfo(Binary()).isExecutable()) << Binary().toStdString() << " is not built";
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    process.setProcessEnvironment(env);
    process.setWorkingDirectory(folder.path());
    process.start(Binary(), args);
  }
  ~Child() {
    if (process.state() != QProcess::NotRunning) {
      process.kill();
      process.waitForFinished();
    }
  }
  QTemporaryDir folder;
  QProcess process;
};

// The frequency as the window shows it: kHz, from the simulated radio's own default state.
std::string DemoRadioKhz() {
  return std::to_string(sim::RadioState{}.frequencyHz / 1000);
}

TEST(Program, TheDemoShowsTheSimulatedRadiosFrequencyAndQuitsCleanly) {
  Child child({"--demo", "--print-changes"});
  ASSERT_TRUE(child.process.waitForStarted(kPatienceMs));
  const std::string expected = "Freq: " + DemoRadioKhz() + " ";
  std::string seen;
  while (seen.find(expected) == std::string::npos && child.process.waitForReadyRead(kPatienceMs)) {
    seen += child.process.readAllStandardOutput().toStdString();
  }
  EXPECT_NE(seen.find(expected), std::string::npos) << "stdout so far:\n" << seen;
  child.process.terminate();  // SIGTERM: quits through File > Quit
  ASSERT_TRUE(child.process.waitForFinished(kPatienceMs));
  EXPECT_EQ(child.process.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(child.process.exitCode(), 0) << child.process.readAllStandardError().toStdString();
}

// Without --demo the program asks nothing of its own at start: whatever the displays show comes
// from the poll, the frequency from its first tick and mode and filter from the second. The radio
// runs in this process, with values the demo's radio does not have.
TEST(Program, PollingAloneShowsTheFrequencyThenModeAndFilterOfARadioOnTheGivenPort) {
  std::string why;
  std::unique_ptr<sim::PtyRadio> radio = sim::PtyRadio::OpenPty(sim::BusOptions{}, why);
  ASSERT_NE(radio, nullptr) << why;
  sim::RadioState state;
  state.frequencyHz = 7'074'000;
  state.mode = 1;    // USB
  state.filter = 2;  // medium
  radio->WithBus([&state](sim::SimBus& bus) { bus.AddRadio(state); });
  radio->StartThread();

  Child child({"--port", QString::fromStdString(radio->SlavePath()), "--print-changes"});
  ASSERT_TRUE(child.process.waitForStarted(kPatienceMs));
  const std::string frequencyOnly = "Freq: 7074  Mode: -  Filter: -\n";
  const std::string all = "Freq: 7074  Mode: USB  Filter: MEDIUM\n";
  std::string seen;
  while (seen.find(all) == std::string::npos && child.process.waitForReadyRead(kPatienceMs)) {
    seen += child.process.readAllStandardOutput().toStdString();
  }
  const std::size_t frequencyAt = seen.find(frequencyOnly);
  const std::size_t allAt = seen.find(all);
  EXPECT_NE(frequencyAt, std::string::npos) << "stdout so far:\n" << seen;
  EXPECT_NE(allAt, std::string::npos) << "stdout so far:\n" << seen;
  EXPECT_LT(frequencyAt, allAt) << "stdout so far:\n" << seen;

  // The radio was asked by the poll: frequency first, then mode, from E0 to its address 08.
  const std::vector<sim::SeenFrame> frames =
      radio->WithBus([](sim::SimBus& bus) { return bus.Frames(); });
  ASSERT_GE(frames.size(), 2u);
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(frames[i].to, 0x08);
    EXPECT_EQ(frames[i].from, 0xE0);
    EXPECT_EQ(frames[i].command, i == 0 ? 0x03 : 0x04);
    EXPECT_EQ(frames[i].data, "");
  }

  child.process.terminate();  // SIGTERM: quits through File > Quit
  ASSERT_TRUE(child.process.waitForFinished(kPatienceMs));
  EXPECT_EQ(child.process.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(child.process.exitCode(), 0) << child.process.readAllStandardError().toStdString();
}

TEST(Program, TheStatusLineNamesAllThreeDisplays) {
  Child child({"--demo", "--status-after", "2500", "--quit-after", "2600"});
  ASSERT_TRUE(child.process.waitForFinished(kPatienceMs));
  EXPECT_EQ(child.process.exitCode(), 0);
  const QString out = QString::fromUtf8(child.process.readAllStandardOutput()).trimmed();
  EXPECT_EQ(
      out, QString("Freq: %1  Mode: FM  Filter: WIDE").arg(QString::fromStdString(DemoRadioKhz())));
}

TEST(Program, APortThatWillNotOpenLeavesTheWindowUp) {
  Child child(
      {"--port", "/dev/tarnline-no-such-port", "--status-after", "300", "--quit-after", "400"});
  ASSERT_TRUE(child.process.waitForFinished(kPatienceMs));
  EXPECT_EQ(child.process.exitCode(), 0);  // still running at 300 ms and quit by the menu item
  EXPECT_EQ(QString::fromUtf8(child.process.readAllStandardOutput()).trimmed(),
            "Freq: -  Mode: -  Filter: -");
  EXPECT_TRUE(child.process.readAllStandardError().contains("/dev/tarnline-no-such-port"));
}

TEST(Program, HelpExplainsAndExitsWithZero) {
  Child child({"--help"});
  ASSERT_TRUE(child.process.waitForFinished(kPatienceMs));
  EXPECT_EQ(child.process.exitCode(), 0);
  const QString out = QString::fromUtf8(child.process.readAllStandardOutput());
  EXPECT_TRUE(out.contains("--port PATH"));
  EXPECT_TRUE(out.contains("--demo"));
}

TEST(Program, ABadArgumentIsRefusedWithStatusTwo) {
  Child child({"--port"});
  ASSERT_TRUE(child.process.waitForFinished(kPatienceMs));
  EXPECT_EQ(child.process.exitCode(), 2);
  EXPECT_TRUE(child.process.readAllStandardError().contains("--port needs a value"));
  EXPECT_TRUE(child.process.readAllStandardOutput().isEmpty());
}

}  // namespace
}  // namespace tarn
