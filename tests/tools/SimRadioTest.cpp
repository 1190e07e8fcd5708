// The simulated radio is the stand-in for real hardware in other tests, so its bytes are checked
// here one by one against the protocol, independently of the program's own receiver.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <initializer_list>
#include <string>

#include "simradio/SimRadio.h"

namespace {

using tarn::sim::BusOptions;
using tarn::sim::PtyRadio;
using tarn::sim::RadioState;
using tarn::sim::SimBus;

constexpr int kController = 0xE0;
constexpr int kRadio = 0x08;

std::string Bytes(std::initializer_list<int> values) {
  std::string out;
  for (int v : values) out.push_back(static_cast<char>(v));
  return out;
}

std::string Frame(int to, int from, int command, const std::string& data = {}) {
  return Bytes({0xFE, 0xFE, to, from, command}) + data + Bytes({0xFD});
}

BusOptions Quiet() {
  BusOptions options;
  options.echo = false;
  return options;
}

// One radio at 0x08 with its defaults; no echo unless a test asks for it.
struct BusTest : ::testing::Test {
  SimBus bus{Quiet()};
  RadioState& radio = bus.AddRadio(RadioState{});

  std::string Ask(const std::string& request, std::int64_t nowMs = 0) {
    bus.Receive(request, nowMs);
    return bus.TakeDue(nowMs);
  }
};

TEST(SimBusEcho, EchoOnHandsTheRequestBackBeforeTheReply) {
  SimBus bus;
  bus.AddRadio(RadioState{});
  const std::string request = Frame(kRadio, kController, 0x04);
  bus.Receive(request, 0);
  EXPECT_EQ(bus.TakeDue(0), request + Frame(kController, kRadio, 0x04, Bytes({0x05, 0x01})));
}

TEST(SimBusEcho, EchoOnHandsBackEvenBytesNobodyAnswers) {
  SimBus bus;
  const std::string garbage = Bytes({0x01, 0xFE, 0x77, 0xFD, 0xFC});
  bus.Receive(garbage, 0);
  EXPECT_EQ(bus.TakeDue(0), garbage);
}

TEST_F(BusTest, EchoOffGivesTheReplyAlone) {
  EXPECT_EQ(Ask(Frame(kRadio, kController, 0x04)),
            Frame(kController, kRadio, 0x04, Bytes({0x05, 0x01})));
}

struct FrequencyCase {
  std::uint64_t hz;
  bool fiveBytes;
  std::string data;
};

class ReadFrequency : public ::testing::TestWithParam<FrequencyCase> {};

TEST_P(ReadFrequency, RepliesInPackedDecimalLeastSignificantFirst) {
  SimBus bus(Quiet());
  RadioState state;
  state.frequencyHz = GetParam().hz;
  state.fiveByteFrequency = GetParam().fiveBytes;
  bus.AddRadio(state);
  bus.Receive(Frame(kRadio, kController, 0x03), 0);
  EXPECT_EQ(bus.TakeDue(0), Frame(kController, kRadio, 0x03, GetParam().data));
}

INSTANTIATE_TEST_SUITE_P(
    Table, ReadFrequency,
    ::testing::Values(FrequencyCase{145'500'000, true, Bytes({0x00, 0x00, 0x50, 0x45, 0x01})},
                      FrequencyCase{14'250'000, false, Bytes({0x00, 0x00, 0x25, 0x14})},
                      FrequencyCase{14'250'000, true, Bytes({0x00, 0x00, 0x25, 0x14, 0x00})},
                      FrequencyCase{7'074'010, true, Bytes({0x10, 0x40, 0x07, 0x07, 0x00})},
                      FrequencyCase{1'234'567'890, true, Bytes({0x90, 0x78, 0x56, 0x34, 0x12})},
                      FrequencyCase{1'999'999'999, true, Bytes({0x99, 0x99, 0x99, 0x99, 0x19})},
                      FrequencyCase{30'000, false, Bytes({0x00, 0x00, 0x03, 0x00})},
                      // Four bytes cannot hold the 100 MHz digit; a real radio of that kind
                      // never tunes there, the simulation just drops it.
                      FrequencyCase{145'500'000, false, Bytes({0x00, 0x00, 0x50, 0x45})}));

TEST_F(BusTest, ReadModeRepliesModeAndFilter) {
  radio.mode = 0x03;
  radio.filter = 2;
  EXPECT_EQ(Ask(Frame(kRadio, kController, 0x04)),
            Frame(kController, kRadio, 0x04, Bytes({0x03, 0x02})));
}

struct SetFrequencyCase {
  const char* name;
  std::string data;
  bool accepted;
  std::uint64_t hzAfter;
};

class SetFrequency : public ::testing::TestWithParam<SetFrequencyCase> {};

TEST_P(SetFrequency, AcceptsValidDecimalInRangeAndRefusesTheRest) {
  SimBus bus(Quiet());
  RadioState& radio = bus.AddRadio(RadioState{});
  radio.minFrequencyHz = 100'000;
  radio.maxFrequencyHz = 500'000'000;
  bus.Receive(Frame(kRadio, kController, 0x05, GetParam().data), 0);
  const int answer = GetParam().accepted ? 0xFB : 0xFA;
  EXPECT_EQ(bus.TakeDue(0), Bytes({0xFE, 0xFE, kController, kRadio, answer, 0xFD}));
  EXPECT_EQ(radio.frequencyHz, GetParam().hzAfter);
}

INSTANTIATE_TEST_SUITE_P(
    Table, SetFrequency,
    ::testing::Values(
        SetFrequencyCase{"FiveBytes", Bytes({0x00, 0x00, 0x25, 0x14, 0x00}), true, 14'250'000},
        SetFrequencyCase{"FourBytes", Bytes({0x50, 0x34, 0x12, 0x07}), true, 7'123'450},
        SetFrequencyCase{"HighestInRange", Bytes({0, 0, 0, 0, 0x05}), true, 500'000'000},
        SetFrequencyCase{"LowestInRange", Bytes({0, 0, 0x10, 0, 0}), true, 100'000},
        SetFrequencyCase{"LowNibbleNotDecimal", Bytes({0x0A, 0, 0x25, 0x14, 0}), false,
                         145'500'000},
        SetFrequencyCase{"HighNibbleNotDecimal", Bytes({0, 0xA0, 0x25, 0x14, 0}), false,
                         145'500'000},
        SetFrequencyCase{"BelowRange", Bytes({0x99, 0x99, 0x09, 0, 0}), false, 145'500'000},
        SetFrequencyCase{"AboveRange", Bytes({0, 0, 0, 0x01, 0x05}), false, 145'500'000},
        SetFrequencyCase{"ThreeBytes", Bytes({0, 0, 0x25}), false, 145'500'000},
        SetFrequencyCase{"SixBytes", Bytes({0, 0, 0x25, 0x14, 0, 0}), false, 145'500'000},
        SetFrequencyCase{"NoData", "", false, 145'500'000}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(BusTest, AnAcceptedFrequencyIsWhatTheNextReadReturns) {
  ASSERT_EQ(Ask(Frame(kRadio, kController, 0x05, Bytes({0x00, 0x70, 0x07, 0x07, 0x00}))),
            Bytes({0xFE, 0xFE, kController, kRadio, 0xFB, 0xFD}));
  EXPECT_EQ(Ask(Frame(kRadio, kController, 0x03)),
            Frame(kController, kRadio, 0x03, Bytes({0x00, 0x70, 0x07, 0x07, 0x00})));
}

struct SetModeCase {
  std::string data;
  bool accepted;
  int modeAfter, filterAfter;
};

class SetMode : public ::testing::TestWithParam<SetModeCase> {};

TEST_P(SetMode, AcceptsKnownModesAndFilters) {
  SimBus bus(Quiet());
  RadioState& radio = bus.AddRadio(RadioState{});  // FM, filter 1
  radio.filter = 2;
  bus.Receive(Frame(kRadio, kController, 0x06, GetParam().data), 0);
  const int answer = GetParam().accepted ? 0xFB : 0xFA;
  EXPECT_EQ(bus.TakeDue(0), Bytes({0xFE, 0xFE, kController, kRadio, answer, 0xFD}));
  EXPECT_EQ(radio.mode, GetParam().modeAfter);
  EXPECT_EQ(radio.filter, GetParam().filterAfter);
}

INSTANTIATE_TEST_SUITE_P(Table, SetMode,
                         ::testing::Values(SetModeCase{Bytes({0x00, 0x01}), true, 0x00, 1},
                                           SetModeCase{Bytes({0x08, 0x03}), true, 0x08, 3},
                                           SetModeCase{Bytes({0x0B, 0x01}), true, 0x0B, 1},
                                           SetModeCase{Bytes({0x03, 0x00}), true, 0x03, 2},
                                           SetModeCase{Bytes({0x09, 0x01}), false, 0x05, 2},
                                           SetModeCase{Bytes({0x11, 0x01}), false, 0x05, 2},
                                           SetModeCase{Bytes({0x01, 0x04}), false, 0x05, 2},
                                           SetModeCase{Bytes({0x01}), false, 0x05, 2},
                                           SetModeCase{Bytes({0x01, 0x01, 0x01}), false, 0x05, 2}));

TEST_F(BusTest, UnknownCommandsAreRefused) {
  for (int command : {0x00, 0x07, 0x1A, 0x25}) {
    EXPECT_EQ(Ask(Frame(kRadio, kController, command)),
              Bytes({0xFE, 0xFE, kController, kRadio, 0xFA, 0xFD}))
        << "command " << command;
  }
}

TEST_F(BusTest, FramesToOtherAddressesGetNoReplyButAreRecorded) {
  EXPECT_EQ(Ask(Frame(0x94, kController, 0x03)), "");
  EXPECT_EQ(bus.NextDue(), -1);
  ASSERT_EQ(bus.Frames().size(), 1u);
  EXPECT_EQ(bus.Frames()[0].to, 0x94);
  EXPECT_EQ(bus.Frames()[0].from, kController);
  EXPECT_EQ(bus.Frames()[0].command, 0x03);
}

TEST_F(BusTest, ReplyGoesToTheRequestsSender) {
  EXPECT_EQ(Ask(Frame(kRadio, 0xE1, 0x04)), Frame(0xE1, kRadio, 0x04, Bytes({0x05, 0x01})));
}

TEST_F(BusTest, TwoRadiosEachAnswerTheirOwnAddress) {
  RadioState second;
  second.address = 0x94;
  second.frequencyHz = 7'100'000;
  bus.AddRadio(second);
  EXPECT_EQ(Ask(Frame(0x94, kController, 0x03)),
            Frame(kController, 0x94, 0x03, Bytes({0x00, 0x00, 0x10, 0x07, 0x00})));
  Ask(Frame(0x94, kController, 0x05, Bytes({0x00, 0x00, 0x20, 0x07, 0x00})));
  EXPECT_EQ(bus.Radio(0x94)->frequencyHz, 7'200'000u);
  EXPECT_EQ(bus.Radio(kRadio)->frequencyHz, 145'500'000u);
  EXPECT_EQ(bus.Radio(0x42), nullptr);
}

TEST_F(BusTest, ReplyDelayHoldsTheReplyButNotTheEcho) {
  bus.Options().echo = true;
  bus.Options().replyDelayMs = 50;
  const std::string request = Frame(kRadio, kController, 0x04);
  bus.Receive(request, 1000);
  EXPECT_EQ(bus.TakeDue(1000), request);
  EXPECT_EQ(bus.NextDue(), 1050);
  EXPECT_EQ(bus.TakeDue(1049), "");
  EXPECT_EQ(bus.TakeDue(1050), Frame(kController, kRadio, 0x04, Bytes({0x05, 0x01})));
  EXPECT_EQ(bus.NextDue(), -1);
}

TEST_F(BusTest, SilentRadiosOnlyEcho) {
  bus.Options().silent = true;
  bus.Options().echo = true;
  const std::string request = Frame(kRadio, kController, 0x03);
  EXPECT_EQ(Ask(request), request);
}

TEST_F(BusTest, JamInRepliesMakesTheReplyUnreadable) {
  const std::string clean = Ask(Frame(kRadio, kController, 0x03));
  bus.Options().jamInReplies = true;
  const std::string jammed = Ask(Frame(kRadio, kController, 0x03));
  const auto jam = jammed.find('\xFC');
  ASSERT_NE(jam, std::string::npos);
  EXPECT_GT(jam, 0u);
  EXPECT_LT(jam, jammed.size() - 1);
  EXPECT_EQ(std::string(jammed).erase(jam, 1), clean);
  // A reader on the same wire loses the jammed reply and still reads the clean one.
  SimBus listener(Quiet());
  listener.Receive(jammed + clean, 0);
  ASSERT_EQ(listener.Frames().size(), 1u);
  EXPECT_EQ(listener.Frames()[0].command, 0x03);
}

TEST_F(BusTest, NoiseFollowsTheReplyAndNeverHoldsProtocolCodes) {
  bus.Options().noiseBytes = 2000;
  const std::string reply = Frame(kController, kRadio, 0x04, Bytes({0x05, 0x01}));
  for (int round = 0; round < 5; ++round) {
    const std::string out = Ask(Frame(kRadio, kController, 0x04));
    ASSERT_EQ(out.size(), reply.size() + 2000);
    EXPECT_EQ(out.substr(0, reply.size()), reply);
    for (char c : out.substr(reply.size())) {
      ASSERT_LT(static_cast<std::uint8_t>(c), 0xFA);
    }
  }
}

TEST(SimBusNoise, TheSameSeedGivesTheSameNoise) {
  auto noise = [](std::uint32_t seed) {
    BusOptions options = Quiet();
    options.noiseBytes = 64;
    options.seed = seed;
    SimBus bus(options);
    bus.AddRadio(RadioState{});
    bus.Receive(Frame(kRadio, kController, 0x04), 0);
    return bus.TakeDue(0);
  };
  EXPECT_EQ(noise(7), noise(7));
  EXPECT_NE(noise(7), noise(8));
}

TEST_F(BusTest, AFrameSplitAcrossReceivesIsAnsweredOnceComplete) {
  const std::string request = Frame(kRadio, kController, 0x03);
  for (std::size_t i = 0; i + 1 < request.size(); ++i) {
    EXPECT_EQ(Ask(request.substr(i, 1), static_cast<std::int64_t>(i)), "") << "after byte " << i;
  }
  EXPECT_EQ(Ask(request.substr(request.size() - 1), 100),
            Frame(kController, kRadio, 0x03, Bytes({0x00, 0x00, 0x50, 0x45, 0x01})));
}

struct ResyncCase {
  const char* name;
  std::string bytes;
  std::size_t frames;
};

class FrameReading : public ::testing::TestWithParam<ResyncCase> {};

TEST_P(FrameReading, RecoversFromBrokenInput) {
  SimBus bus(Quiet());
  bus.Receive(GetParam().bytes, 0);
  ASSERT_EQ(bus.Frames().size(), GetParam().frames);
  for (const auto& frame : bus.Frames()) {
    EXPECT_EQ(frame.to, kRadio);
    EXPECT_EQ(frame.from, kController);
    EXPECT_EQ(frame.command, 0x03);
  }
}

const std::string kRead = Frame(kRadio, kController, 0x03);

INSTANTIATE_TEST_SUITE_P(
    Table, FrameReading,
    ::testing::Values(ResyncCase{"Clean", kRead, 1},
                      ResyncCase{"GarbageFirst", Bytes({0x01, 0x45}) + kRead, 1},
                      ResyncCase{"ThreeFe", Bytes({0xFE}) + kRead, 1},
                      ResyncCase{"LongPreamble", Bytes({0xFE, 0xFE}) + kRead, 1},
                      ResyncCase{"SingleFeIsNoPreamble",
                                 Bytes({0xFE, kRadio, kController, 0x03, 0xFD}), 0},
                      ResyncCase{"CutInTheHeader", Bytes({0xFE, 0xFE, kRadio}) + kRead, 1},
                      ResyncCase{"JamInTheHeader", Bytes({0xFE, 0xFE, kRadio, 0xFC}) + kRead, 1},
                      ResyncCase{"JamBeforeTheEnd",
                                 Bytes({0xFE, 0xFE, kRadio, kController, 0x03, 0xFC, 0xFD}), 0},
                      ResyncCase{"TooShort", Bytes({0xFE, 0xFE, kRadio, kController, 0xFD}), 0},
                      ResyncCase{"BackToBack", kRead + kRead + kRead, 3}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(SimBusFrames, FeInsideDataIsData) {
  SimBus bus(Quiet());
  bus.Receive(Frame(kRadio, kController, 0x05, Bytes({0xFE, 0x00})), 0);
  ASSERT_EQ(bus.Frames().size(), 1u);
  EXPECT_EQ(bus.Frames()[0].data, Bytes({0xFE, 0x00}));
}

// The program's side of a pseudo-terminal, opened as the program would.
int OpenSlave(const std::string& path) {
  const int fd = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
  if (fd < 0) return fd;
  termios tio{};
  tcgetattr(fd, &tio);
  cfmakeraw(&tio);
  tcsetattr(fd, TCSANOW, &tio);
  return fd;
}

// Reads until `count` bytes came or a generous deadline passed (a guard, not a speed check).
std::string ReadBytes(int fd, std::size_t count) {
  std::string got;
  const auto deadline = tarn::sim::SteadyNowMs() + 5000;
  while (got.size() < count && tarn::sim::SteadyNowMs() < deadline) {
    pollfd p{fd, POLLIN, 0};
    if (poll(&p, 1, 100) <= 0) continue;
    char buffer[256];
    const ssize_t n = read(fd, buffer, sizeof buffer);
    if (n > 0) got.append(buffer, static_cast<std::size_t>(n));
  }
  return got;
}

struct PtyTest : ::testing::Test {
  void SetUp() override {
    std::string why;
    radio = PtyRadio::OpenPty(BusOptions{}, why);
    ASSERT_NE(radio, nullptr) << why;
    radio->WithBus([](SimBus& bus) { bus.AddRadio(RadioState{}); });
    slave = OpenSlave(radio->SlavePath());
    ASSERT_GE(slave, 0) << radio->SlavePath();
  }
  void TearDown() override {
    if (slave >= 0) close(slave);
  }
  std::unique_ptr<PtyRadio> radio;
  int slave = -1;
};

const std::string kReadReply = Frame(kController, kRadio, 0x03, Bytes({0, 0, 0x50, 0x45, 0x01}));

TEST_F(PtyTest, ServeOnceEchoesAndRepliesByteForByte) {
  ASSERT_EQ(write(slave, kRead.data(), kRead.size()), static_cast<ssize_t>(kRead.size()));
  radio->ServeOnce(1000);
  EXPECT_EQ(ReadBytes(slave, kRead.size() + kReadReply.size()), kRead + kReadReply);
  EXPECT_EQ(radio->WithBus([](SimBus& bus) { return bus.Frames().size(); }), 1u);
}

TEST_F(PtyTest, TheServingThreadAnswersToo) {
  radio->StartThread();
  ASSERT_EQ(write(slave, kRead.data(), kRead.size()), static_cast<ssize_t>(kRead.size()));
  EXPECT_EQ(ReadBytes(slave, kRead.size() + kReadReply.size()), kRead + kReadReply);
  radio->Stop();
}

TEST_F(PtyTest, HangupIsSeenByTheProgramsSide) {
  char byte = 0;
  ASSERT_EQ(read(slave, &byte, 1), -1);  // open and idle: nothing to read yet
  EXPECT_EQ(errno, EAGAIN);
  radio->StartThread();
  radio->Hangup();
  const ssize_t n = read(slave, &byte, 1);
  EXPECT_TRUE(n == 0 || (n < 0 && errno == EIO)) << "read returned " << n;
}

TEST(PtyRadioDevice, OpensATtyWithoutModemLinesAndRefusesWhatIsNot) {
  std::string why;
  auto pty = PtyRadio::OpenPty(BusOptions{}, why);
  ASSERT_NE(pty, nullptr) << why;
  EXPECT_NE(PtyRadio::OpenDevice(pty->SlavePath(), BusOptions{}, why), nullptr) << why;
  why.clear();
  EXPECT_EQ(PtyRadio::OpenDevice("/dev/null", BusOptions{}, why), nullptr);
  EXPECT_FALSE(why.empty());
}

}  // namespace
